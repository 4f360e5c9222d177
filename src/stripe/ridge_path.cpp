#include "stripe/ridge_path.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace weld {

namespace {

// Gains and costs are fixed-point numbers; kGainOne is the most that one column can add.
constexpr int kGainOne = 1024;
constexpr int kHalfGainContrast = 40 * kRidgeUnit;  // contrast that adds half of it
constexpr int kReachColumns = 4;                    // columns that a link may skip to, others are breaks
constexpr int kCostPerRow = 8;                      // per half row of shift
constexpr int kCostPerExcessRow = 100;              // per half row beyond what a steep flank shifts
constexpr int kSteepRows = 6;                       // half rows of shift per column on a steep flank
constexpr int kCostPerGapColumn = 100;
constexpr int kBreakCost = 3 * kGainOne;
constexpr int kMinPieceColumns = 5;
constexpr int kNone = -1;

struct TState {
  std::int64_t score = 0;
  int previous = kNone;  // state index
  bool isLinked = false;
};

int gainOf(const TRidgeCandidate& candidate) {
  return kGainOne * candidate.contrast / (candidate.contrast + kHalfGainContrast);
}

int linkCost(const TRidgeCandidate& from, const TRidgeCandidate& to, int columns) {
  const int shift = std::abs(to.y - from.y);
  const int free = kSteepRows * columns + std::max(from.widthPx, to.widthPx) / 2;
  return kCostPerRow * shift / columns + kCostPerExcessRow * std::max(0, shift - free) +
         kCostPerGapColumn * (columns - 1);
}

class TPathSearch {
public:
  explicit TPathSearch(const std::vector<TRidgeCandidates>& source)
      : columns(source), states(source.size() * TRidgeCandidates::kMax) {}

  std::vector<TRidgePiece> run() {
    int best = kNone;
    for (int c = 0; c < static_cast<int>(columns.size()); ++c) {
      const int bestBefore = best;
      for (int i = 0; i < at(c).count; ++i) {
        const int state = enter(c, i, bestBefore);
        if (best == kNone || score(state) > score(best)) best = state;
      }
    }
    return collect(best);
  }

private:
  static constexpr int kPerColumn = TRidgeCandidates::kMax;

  const TRidgeCandidates& at(int c) const { return columns[static_cast<std::size_t>(c)]; }
  const TRidgeCandidate& candidate(int state) const {
    return at(state / kPerColumn).items[static_cast<std::size_t>(state % kPerColumn)];
  }
  std::int64_t score(int state) const { return states[static_cast<std::size_t>(state)].score; }

  // Best way to reach candidate i of column c: a start, a break after the best path so far, or a link.
  int enter(int c, int i, int bestBefore) {
    const TRidgeCandidate& here = at(c).items[static_cast<std::size_t>(i)];
    TState best;
    if (bestBefore != kNone && score(bestBefore) > kBreakCost) {
      best = {score(bestBefore) - kBreakCost, bestBefore, false};
    }
    for (int step = 1; step <= std::min(kReachColumns, c); ++step) {
      for (int j = 0; j < at(c - step).count; ++j) {
        const int from = (c - step) * kPerColumn + j;
        const int cost = linkCost(candidate(from), here, step);
        if (cost < kBreakCost && score(from) - cost > best.score) best = {score(from) - cost, from, true};
      }
    }
    best.score += gainOf(here);
    const int state = c * kPerColumn + i;
    states[static_cast<std::size_t>(state)] = best;
    return state;
  }

  std::vector<TRidgePiece> collect(int last) const {
    std::vector<TRidgePiece> pieces;
    TRidgePiece piece;
    for (int s = last; s != kNone;) {
      const TState& state = states[static_cast<std::size_t>(s)];
      piece.push_back({s / kPerColumn, candidate(s)});
      if (!state.isLinked) {
        std::reverse(piece.begin(), piece.end());
        if (static_cast<int>(piece.size()) >= kMinPieceColumns) pieces.push_back(std::move(piece));
        piece.clear();
      }
      s = state.previous;
    }
    std::reverse(pieces.begin(), pieces.end());
    return pieces;
  }

  const std::vector<TRidgeCandidates>& columns;
  std::vector<TState> states;
};

}  // namespace

std::vector<TRidgePiece> findRidgePath(const std::vector<TRidgeCandidates>& columns) {
  return TPathSearch(columns).run();
}

}  // namespace weld
