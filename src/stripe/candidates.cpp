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

// The candidates must be in column order.
bool hasEnoughColumns(const std::vector<TStripeCandidate>& candidates) {
  int columns = 0;
  int column = -1;
  for (const TStripeCandidate& candidate : candidates) {
    if (candidate.x != column && ++columns == kMinColumns) return true;
    column = candidate.x;
  }
  return false;
}

// The most frequent width of the columns with exactly one candidate, of all candidates when there is no such
// column; the smallest of equally frequent ones. The candidates must be in column order, at least one.
int modalWidth(const std::vector<TStripeCandidate>& candidates) {
  std::array<int, kMaxPairPx> counts{};
  bool hasSingles = false;
  int before = -1;
  for (auto candidate = candidates.begin(); candidate != candidates.end(); ++candidate) {
    const auto next = candidate + 1;
    const bool isSingle = candidate->x != before && (next == candidates.end() || candidate->x != next->x);
    before = candidate->x;
    counts[candidate->widthPx] += isSingle ? 1 : 0;
    hasSingles = hasSingles || isSingle;
  }
  if (!hasSingles) {
    for (const TStripeCandidate& candidate : candidates) ++counts[candidate.widthPx];
  }
  return static_cast<int>(std::max_element(counts.begin(), counts.end()) - counts.begin());
}

TWidthBand widthBand(int mode) {
  return {std::max(kMinWidthPx, std::min(mode - kWidthSlackPx, mode * (1.0 - kWidthSlackShare))),
          std::min(kMaxWidthPx, std::max(mode + kWidthSlackPx, mode * (1.0 + kWidthSlackShare)))};
}

void keepWidths(std::vector<TStripeCandidate>& candidates, const TWidthBand& band) {
  const auto isOutside = [&](const TStripeCandidate& c) { return c.widthPx < band.low || c.widthPx > band.high; };
  candidates.erase(std::remove_if(candidates.begin(), candidates.end(), isOutside), candidates.end());
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
  if (!hasEnoughColumns(candidates)) return {};

  const int modalWidthPx = modalWidth(candidates);
  keepWidths(candidates, widthBand(modalWidthPx));
  if (!hasEnoughColumns(candidates)) return {{}, static_cast<double>(modalWidthPx)};

  return {dropShortPieces(selectStripeRuns(candidates)), static_cast<double>(modalWidthPx)};
}

}  // namespace weld
