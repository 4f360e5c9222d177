#include "stripe/candidates.h"

#include "stripe/stripe_runs.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace weld {
namespace {

constexpr int kMinColumns = 10;
constexpr double kMinWidthPx = 3.0;
constexpr double kMaxWidthPx = 100.0;
constexpr double kWidthSlackPx = 10.0;
constexpr double kWidthSlackShare = 0.5;
constexpr float kMaxJumpSlope = 4.0F;
constexpr float kMinPiecePx = 10.0F;  // exclusive

struct TWidthBand {
  double low = 0.0;
  double high = 0.0;
};

TCandidateTable makeTable(std::vector<TStripeCandidate> candidates) {
  const auto isLeftOf = [](const TStripeCandidate& a, const TStripeCandidate& b) { return a.x < b.x; };
  // Regions come left to right, so that there is seldom anything to sort.
  if (!std::is_sorted(candidates.begin(), candidates.end(), isLeftOf)) {
    std::stable_sort(candidates.begin(), candidates.end(), isLeftOf);
  }
  TCandidateTable table;
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    if (i == 0 || candidates[i].x != candidates[i - 1].x) table.begin.push_back(static_cast<int>(i));
  }
  table.begin.push_back(static_cast<int>(candidates.size()));
  table.candidates = std::move(candidates);
  return table;
}

// Widths of the columns with exactly one candidate; all widths when there is no such column.
std::vector<int> collectWidths(const TCandidateTable& table) {
  std::vector<int> widths;
  for (int column = 0; column < table.columns(); ++column) {
    const int first = table.begin[column];
    if (table.begin[column + 1] - first == 1) widths.push_back(static_cast<int>(table.candidates[first].widthPx));
  }
  if (!widths.empty()) return widths;
  for (const TStripeCandidate& candidate : table.candidates) widths.push_back(static_cast<int>(candidate.widthPx));
  return widths;
}

// The most frequent value, the smallest of equally frequent ones.
int modeOf(std::vector<int> values) {
  std::sort(values.begin(), values.end());
  int mode = 0;
  std::ptrdiff_t longest = 0;
  for (auto first = values.begin(); first != values.end();) {
    const auto last = std::upper_bound(first, values.end(), *first);
    if (last - first > longest) {
      longest = last - first;
      mode = *first;
    }
    first = last;
  }
  return mode;
}

TWidthBand widthBand(int mode) {
  return {std::max(kMinWidthPx, std::min(mode - kWidthSlackPx, mode * (1.0 - kWidthSlackShare))),
          std::min(kMaxWidthPx, std::max(mode + kWidthSlackPx, mode * (1.0 + kWidthSlackShare)))};
}

std::vector<TStripeCandidate> keepWidths(std::vector<TStripeCandidate> candidates, const TWidthBand& band) {
  const auto isOutside = [&](const TStripeCandidate& candidate) {
    return candidate.widthPx < band.low || candidate.widthPx > band.high;
  };
  candidates.erase(std::remove_if(candidates.begin(), candidates.end(), isOutside), candidates.end());
  return candidates;
}

bool isJump(cv::Point2f from, cv::Point2f to) {
  return std::abs(to.y - from.y) > kMaxJumpSlope * std::abs(to.x - from.x);
}

}  // namespace

std::vector<cv::Point2f> dropShortPieces(const std::vector<cv::Point2f>& centres) {
  const int count = static_cast<int>(centres.size());
  if (count < kMinColumns) return centres;

  std::vector<cv::Point2f> kept;
  int pieceBegin = 0;
  for (int i = 1; i < count; ++i) {
    if (!isJump(centres[i - 1], centres[i])) continue;
    // Deliberate: measured up to the first centre behind the jump.
    if (centres[i].x - centres[pieceBegin].x > kMinPiecePx) {
      kept.insert(kept.end(), centres.begin() + pieceBegin, centres.begin() + i);
    }
    pieceBegin = i;
  }
  if (centres.back().x - centres[pieceBegin].x > kMinPiecePx) {
    kept.insert(kept.end(), centres.begin() + pieceBegin, centres.end());
  }
  return kept;
}

TReducedStripe reduceStripeCandidates(std::vector<TStripeCandidate> candidates) {
  TCandidateTable table = makeTable(std::move(candidates));
  if (table.columns() < kMinColumns) return {};

  const int modalWidthPx = modeOf(collectWidths(table));
  const TCandidateTable fitting = makeTable(keepWidths(std::move(table.candidates), widthBand(modalWidthPx)));
  if (fitting.columns() < kMinColumns) return {{}, static_cast<double>(modalWidthPx)};

  return {dropShortPieces(selectStripeRuns(fitting)), static_cast<double>(modalWidthPx)};
}

}  // namespace weld
