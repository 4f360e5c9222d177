#include "stripe/edge_pairs/candidates.h"

#include "stripe/edge_pairs/stripe_runs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
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

constexpr TCheck kEnoughCandidates =
    countCheck({2, TWeldOutcome::noStripe, "stripe", "too few columns with an edge pair"},
               "columns with an edge pair", TRule::atLeast);
constexpr TCheck kEnoughWidths =
    countCheck({3, TWeldOutcome::noStripe, "stripe", "too few columns of the usual stripe width"},
               "columns of the usual stripe width", TRule::atLeast);

struct TWidthBand {
  double low = 0.0;
  double high = 0.0;

  // For whole widths alone.
  int lowPx() const { return static_cast<int>(std::ceil(low)); }
  int highPx() const { return static_cast<int>(high); }
};

// Regions come left to right, so that there is seldom anything to sort.
void sortByColumn(TList<TStripeCandidate>& candidates) {
  const auto isLeftOf = [](const TStripeCandidate& a, const TStripeCandidate& b) { return a.x < b.x; };
  if (!std::is_sorted(candidates.begin(), candidates.end(), isLeftOf)) {
    std::stable_sort(candidates.begin(), candidates.end(), isLeftOf);
  }
}

// Counts up to most. The candidates must be in column order.
int countColumns(TView<TStripeCandidate> candidates, int most) {
  int columns = 0;
  int column = -1;
  for (const TStripeCandidate& candidate : candidates) {
    if (candidate.x != column && ++columns == most) break;
    column = candidate.x;
  }
  return columns;
}

bool hasEnoughColumns(TView<TStripeCandidate> candidates, const TTrace& trace, const TCheck& check) {
  const int most = trace ? std::numeric_limits<int>::max() : kMinColumns;
  return trace.passes(check, countColumns(candidates, most), kMinColumns);
}

// The most frequent width of the columns with exactly one candidate, of all candidates when there is no such
// column; the smallest of equally frequent ones. The candidates must be in column order, at least one.
int modalWidth(TView<TStripeCandidate> candidates) {
  // In turn in four counts: one alone would wait for itself, as neighbours are equally wide.
  std::array<std::array<int, kMaxPairPx>, 4> counts{};
  int singles = 0;
  int before = -1;
  std::size_t turn = 0;
  for (auto candidate = candidates.begin(); candidate != candidates.end(); ++candidate) {
    const auto next = candidate + 1;
    const bool isSingle = candidate->x != before && (next == candidates.end() || candidate->x != next->x);
    before = candidate->x;
    counts[turn++ % counts.size()][candidate->widthPx] += isSingle ? 1 : 0;
    singles += isSingle ? 1 : 0;
  }
  if (singles == 0) {
    for (const TStripeCandidate& candidate : candidates) ++counts[0][candidate.widthPx];
  }
  for (std::size_t width = 0; width < counts[0].size(); ++width)
    counts[0][width] += counts[1][width] + counts[2][width] + counts[3][width];
  return static_cast<int>(std::max_element(counts[0].begin(), counts[0].end()) - counts[0].begin());
}

TWidthBand widthBand(int mode) {
  return {std::max(kMinWidthPx, std::min(mode - kWidthSlackPx, mode * (1.0 - kWidthSlackShare))),
          std::min(kMaxWidthPx, std::max(mode + kWidthSlackPx, mode * (1.0 + kWidthSlackShare)))};
}

cv::Point pointOf(const TStripeCandidate& candidate) {
  return {candidate.x, candidate.y};
}

void keepWidths(TList<TStripeCandidate>& candidates, const TWidthBand& band, const TTrace& trace) {
  const int low = band.lowPx();
  const int high = band.highPx();
  const auto isOutside = [&](const TStripeCandidate& c) { return c.widthPx < low || c.widthPx > high; };
  const std::size_t before = candidates.size();
  if (trace) {
    for (const TStripeCandidate& c : candidates) {
      if (isOutside(c)) trace.attempt().rejected.push_back(pointOf(c));
    }
  }
  candidates.erase(std::remove_if(candidates.begin(), candidates.end(), isOutside), candidates.end());
  trace.addFilter("width band", before, candidates.size());
}

void reportWidths(int modalWidthPx, const TWidthBand& band, const TTrace& trace) {
  if (!trace) return;
  trace.attempt().modalWidthPx = modalWidthPx;
  trace.attempt().minWidthPx = band.low;
  trace.attempt().maxWidthPx = band.high;
}

// Candidates and centres are in column order; every centre is a candidate.
void reportUnchosen(TView<TStripeCandidate> candidates, TPointView centres, const TTrace& trace) {
  if (!trace) return;
  auto centre = centres.begin();
  for (const TStripeCandidate& candidate : candidates) {
    const cv::Point p = pointOf(candidate);
    const bool isChosen = centre != centres.end() && *centre == cv::Point2f(p);
    if (isChosen) {
      ++centre;
    } else {
      trace.attempt().rejected.push_back(p);
    }
  }
  trace.addFilter("choice of runs", candidates.size(), centres.size());
}

bool isJump(cv::Point2f from, cv::Point2f to) {
  return std::abs(to.y - from.y) > kMaxJumpSlope * std::abs(to.x - from.x);
}

}  // namespace

TPoints dropShortPieces(TPoints centres) {
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

TReducedStripe reduceStripeCandidates(const TFrame& frame, TList<TStripeCandidate>& candidates) {
  const TTrace& trace = frame.trace;
  sortByColumn(candidates);
  if (!hasEnoughColumns(candidates, trace, kEnoughCandidates)) return {TPoints(frame.memory)};

  const int modalWidthPx = modalWidth(candidates);
  const TWidthBand band = widthBand(modalWidthPx);
  reportWidths(modalWidthPx, band, trace);
  keepWidths(candidates, band, trace);
  if (!hasEnoughColumns(candidates, trace, kEnoughWidths))
    return {TPoints(frame.memory), static_cast<double>(modalWidthPx)};

  TPoints runs = selectStripeRuns(candidates, frame.memory);
  reportUnchosen(candidates, runs, trace);
  const std::size_t before = runs.size();
  TReducedStripe stripe{dropShortPieces(std::move(runs)), static_cast<double>(modalWidthPx)};
  trace.addFilter("short pieces", before, stripe.centres.size());
  return stripe;
}

}  // namespace weld
