#include "stripe/candidates.h"

#include "stripe/stripe_runs.h"

#include <algorithm>
#include <array>
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

// Regions come left to right, so that there is seldom anything to sort.
void sortByColumn(std::vector<TStripeCandidate>& candidates) {
  const auto isLeftOf = [](const TStripeCandidate& a, const TStripeCandidate& b) { return a.x < b.x; };
  if (!std::is_sorted(candidates.begin(), candidates.end(), isLeftOf)) {
    std::stable_sort(candidates.begin(), candidates.end(), isLeftOf);
  }
}

// The candidates must be in column order. `memory` is taken over, whatever it holds.
TCandidateTable makeTable(std::vector<TStripeCandidate> candidates, std::vector<int> memory = {}) {
  TCandidateTable table;
  table.begin = std::move(memory);
  table.begin.clear();
  table.begin.reserve(candidates.size() + 1);
  int column = -1;
  const int count = static_cast<int>(candidates.size());
  for (int i = 0; i < count; ++i) {
    if (candidates[i].x == column) continue;
    table.begin.push_back(i);
    column = candidates[i].x;
  }
  table.begin.push_back(count);
  table.candidates = std::move(candidates);
  return table;
}

// The most frequent width of the columns with exactly one candidate, of all candidates when there is no such
// column; the smallest of equally frequent ones.
int modalWidth(const TCandidateTable& table) {
  std::array<int, kMaxPairPx> counts{};
  bool hasSingles = false;
  for (int column = 0; column < table.columns(); ++column) {
    const int first = table.begin[column];
    if (table.begin[column + 1] - first > 1) continue;
    ++counts[table.candidates[first].widthPx];
    hasSingles = true;
  }
  if (!hasSingles) {
    for (const TStripeCandidate& candidate : table.candidates) ++counts[candidate.widthPx];
  }
  return static_cast<int>(std::max_element(counts.begin(), counts.end()) - counts.begin());
}

TWidthBand widthBand(int mode) {
  return {std::max(kMinWidthPx, std::min(mode - kWidthSlackPx, mode * (1.0 - kWidthSlackShare))),
          std::min(kMaxWidthPx, std::max(mode + kWidthSlackPx, mode * (1.0 + kWidthSlackShare)))};
}

TCandidateTable keepWidths(TCandidateTable table, const TWidthBand& band) {
  std::vector<TStripeCandidate>& candidates = table.candidates;
  const auto firstOutside = std::remove_if(candidates.begin(), candidates.end(), [&](const TStripeCandidate& c) {
    return c.widthPx < band.low || c.widthPx > band.high;
  });
  if (firstOutside == candidates.end()) return table;
  candidates.erase(firstOutside, candidates.end());
  return makeTable(std::move(candidates), std::move(table.begin));
}

bool isJump(cv::Point2f from, cv::Point2f to) {
  return std::abs(to.y - from.y) > kMaxJumpSlope * std::abs(to.x - from.x);
}

}  // namespace

std::vector<cv::Point2f> dropShortPieces(std::vector<cv::Point2f> centres) {
  const int count = static_cast<int>(centres.size());
  if (count < kMinColumns) return centres;

  auto keptEnd = centres.begin();
  int pieceBegin = 0;
  const auto endPiece = [&](int end, cv::Point2f limit) {
    if (limit.x - centres[pieceBegin].x > kMinPiecePx) {
      keptEnd = std::move(centres.begin() + pieceBegin, centres.begin() + end, keptEnd);
    }
    pieceBegin = end;
  };
  cv::Point2f previous = centres.front();
  for (int i = 1; i < count; ++i) {
    const cv::Point2f centre = centres[i];
    // Deliberate: a piece is measured up to the first centre behind the jump, the last one to its own end.
    if (isJump(previous, centre)) endPiece(i, centre);
    previous = centre;
  }
  endPiece(count, centres.back());
  centres.erase(keptEnd, centres.end());
  return centres;
}

TReducedStripe reduceStripeCandidates(std::vector<TStripeCandidate> candidates) {
  sortByColumn(candidates);
  TCandidateTable table = makeTable(std::move(candidates));
  if (table.columns() < kMinColumns) return {};

  const int modalWidthPx = modalWidth(table);
  const TCandidateTable fitting = keepWidths(std::move(table), widthBand(modalWidthPx));
  if (fitting.columns() < kMinColumns) return {{}, static_cast<double>(modalWidthPx)};

  return {dropShortPieces(selectStripeRuns(fitting)), static_cast<double>(modalWidthPx)};
}

}  // namespace weld
