#include "stripe/ridge/ridge_path.h"

#include "stripe/ridge/ridge_links.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace weld {

namespace {

constexpr int kHalfGainExcess = 40 * kRidgeUnit;  // contrast over the least one that adds half of it
constexpr int kReachColumns = 4;                  // columns that a link may skip to, others are breaks
constexpr int kMinStrongColumns = 8;              // of pieces that continue each other
constexpr int kMinStrongOfPiece = 2;              // of each of them
constexpr int kStrongShare = 4;                   // at least one column in so many is strong

constexpr int kFadeNodes = 24;  // nodes over which a stripe fades
constexpr int kFadeRatio = 12;  // by no more than this

// A piece that stops may resume on its own continuation: the columns between count as if the stripe were
// there, a little weaker, so that spatter in a missing stretch does not pay.
constexpr int kResumeColumns = 64;       // longest such gap
constexpr int kDirectionNodes = 8;       // nodes that tell the direction of a piece
constexpr int kResumeRows = 6;           // half rows off the continuation that are tolerated,
constexpr int kResumeRowsPerGap = 3;     // and one more per so many columns of gap
constexpr int kSideStepCost = kGainOne;  // of resuming farther off than that, besides the excess rows
constexpr int kResumeGainNum = 5;        // gain of a column between: 5/8 of the last one's
constexpr int kResumeGainShift = 3;
constexpr int kNone = -1;

// How the path comes to a node: from anywhere, from a piece that stopped on the same line, from a neighbour.
enum class TStep { fresh, resumed, linked };

struct TState {
  std::int64_t score = 0;
  int previous = kNone;  // state index
  int run = 1;           // nodes of the piece so far
  TStep step = TStep::fresh;
  bool isContinued = false;
};

// A piece that stopped, and its direction.
struct TEnd {
  int state = kNone;
  int column = 0;
  int y = 0;
  std::int64_t score = 0;
  int shift = 0;    // half rows over
  int columns = 1;  // so many columns
  int gain = 0;     // of its last node
};

struct TPathNode {
  TRidgeNode node;
  TStep step = TStep::fresh;
};

using TPathIterator = std::pmr::vector<TPathNode>::const_iterator;

bool hasStrong(TPathIterator begin, TPathIterator end, int least) {
  const auto strong = std::count_if(begin, end, [](const TPathNode& n) { return n.node.candidate.isStrong; });
  return strong >= least && strong * kStrongShare >= end - begin;
}

// A node that only continues the stripe and is far darker than it is close by: noise beside a break. A stripe
// that fades does so over more columns.
bool isOutshone(TPathIterator node, TPathIterator begin, TPathIterator end) {
  const TRidgeCandidate& own = node->node.candidate;
  if (own.isStrong) return false;
  const auto first = node - std::min<std::ptrdiff_t>(kFadeNodes, node - begin);
  const auto last = node + std::min<std::ptrdiff_t>(kFadeNodes + 1, end - node);
  return std::any_of(first, last,
                     [&](const TPathNode& n) { return n.node.candidate.contrast > kFadeRatio * own.contrast; });
}

TRidgePiece copyPiece(TPathIterator begin, TPathIterator end, std::pmr::memory_resource* memory) {
  TRidgePiece piece(memory);
  piece.reserve(static_cast<std::size_t>(end - begin));
  for (auto node = begin; node != end; ++node) {
    if (!isOutshone(node, begin, end)) piece.push_back(node->node);
  }
  return piece;
}

// First node after `begin` that is reached in a looser way than `step`.
TPathIterator findCut(TPathIterator begin, TPathIterator end, TStep step) {
  return std::find_if(begin + 1, end, [&](const TPathNode& n) { return n.step < step; });
}

std::pmr::vector<TRidgePiece> cutPath(const std::pmr::vector<TPathNode>& path, std::pmr::memory_resource* memory) {
  std::pmr::vector<TRidgePiece> pieces(memory);
  for (auto line = path.begin(); line != path.end();) {
    const auto lineEnd = findCut(line, path.end(), TStep::resumed);
    const bool isStripe = hasStrong(line, lineEnd, kMinStrongColumns);
    while (line != lineEnd) {
      const auto pieceEnd = findCut(line, lineEnd, TStep::linked);
      if (isStripe && hasStrong(line, pieceEnd, kMinStrongOfPiece)) {
        pieces.push_back(copyPiece(line, pieceEnd, memory));
      }
      line = pieceEnd;
    }
  }
  return pieces;
}

int gainOf(const TRidgeCandidate& candidate) {
  return kGainOne * candidate.excess / (candidate.excess + kHalfGainExcess);
}

class TPathSearch {
public:
  TPathSearch(const std::pmr::vector<TRidgeCandidates>& source, std::pmr::memory_resource* resource)
      : columns(source),
        memory(resource),
        states(source.size() * TRidgeCandidates::kMax, resource),
        links(source.size(), resource),
        ends(resource) {}

  std::pmr::vector<TPathNode> run() {
    int best = kNone;
    for (int c = 0; c < static_cast<int>(columns.size()); ++c) {
      collectEnds(c - kReachColumns - 1, c);
      const int bestBefore = best;
      measureLeads(c, bestBefore);
      for (int i = 0; i < at(c).count; ++i) {
        const int state = enter(c, i, bestBefore);
        if (best == kNone || score(state) > score(best)) best = state;
      }
    }
    return trace(best);
  }

private:
  static constexpr int kPerColumn = TRidgeCandidates::kMax;

  const TRidgeCandidates& at(int c) const { return columns[static_cast<std::size_t>(c)]; }
  const TRidgeCandidate& candidate(int state) const {
    return at(state / kPerColumn).items[static_cast<std::size_t>(state % kPerColumn)];
  }
  const TLinkColumn& linksOf(int c) const { return links[static_cast<std::size_t>(c)]; }
  std::int64_t score(int state) const { return linksOf(state / kPerColumn).score[state % kPerColumn]; }

  // Best way to reach candidate i of column c: a start, a break after the best path so far, a link to a
  // neighbour, or the continuation of a piece that stopped.
  int enter(int c, int i, int bestBefore) {
    const TRidgeCandidate& here = at(c).items[static_cast<std::size_t>(i)];
    TState best;
    if (bestBefore != kNone && score(bestBefore) > kBreakCost) {
      best.score = score(bestBefore) - kBreakCost;
      best.previous = bestBefore;
    }
    const int gain = gainOf(here);
    link(c, here, best);
    if (best.step != TStep::linked) resume(c, here, gain, best);
    best.score += gain;
    const int state = c * kPerColumn + i;
    states[static_cast<std::size_t>(state)] = best;
    addLinkEnd(here, best.score, links[static_cast<std::size_t>(c)]);
    return state;
  }

  static void addLinkEnd(const TRidgeCandidate& candidate, std::int64_t score, TLinkColumn& column) {
    const int i = column.count++;
    column.y[i] = static_cast<float>(candidate.y);
    column.widthPx[i] = static_cast<float>(candidate.widthPx);
    column.score[i] = score;
  }

  // Of the states that links may come from, over the best score so far.
  void measureLeads(int c, int bestBefore) {
    leadBase = bestBefore != kNone ? score(bestBefore) : 0;
    for (int step = 1; step <= std::min(kReachColumns, c); ++step)
      leads[static_cast<std::size_t>(step)] = TLeads(linksOf(c - step), leadBase);
  }

  void link(int c, const TRidgeCandidate& here, TState& best) {
    for (int step = 1; step <= std::min(kReachColumns, c); ++step) {
      const TLinkColumn& before = linksOf(c - step);
      const auto leastLead = static_cast<float>(best.score - leadBase);
      unsigned bits = findPromising(before, leads[static_cast<std::size_t>(step)], here, step, leastLead);
      for (; bits != 0; bits &= bits - 1) {
        const int i = __builtin_ctz(bits);
        const auto cost = linkCost(at(c - step).items[static_cast<std::size_t>(i)], here, step);
        if (!cost || before.score[i] - *cost <= best.score) continue;
        best.score = before.score[i] - *cost;
        best.previous = (c - step) * kPerColumn + i;
        best.step = TStep::linked;
      }
    }
    if (best.step != TStep::linked) return;
    TState& from = states[static_cast<std::size_t>(best.previous)];
    from.isContinued = true;
    best.run = from.run + 1;
  }

  void resume(int c, const TRidgeCandidate& here, int gainHere, TState& best) const {
    for (const TEnd& end : ends) {
      const int gap = c - end.column;
      const int bonus = (gap - 1) * std::min(end.gain, gainHere) * kResumeGainNum >> kResumeGainShift;
      if (end.score + bonus <= best.score) continue;
      const int expected = end.y + end.shift * gap / end.columns;
      const int off = std::abs(here.y - expected) - kResumeRows - gap / kResumeRowsPerGap;
      const std::int64_t total = end.score + (off <= 0 ? bonus : -kSideStepCost - off * kCostPerExcessRow);
      if (total <= best.score) continue;
      best.score = total;
      best.previous = end.state;
      best.step = off <= 0 ? TStep::resumed : TStep::fresh;
    }
  }

  // Notes the pieces that stopped at column c, and forgets those out of reach of column `now`.
  void collectEnds(int c, int now) {
    const auto isOld = [&](const TEnd& end) { return now - end.column > kResumeColumns; };
    ends.erase(std::remove_if(ends.begin(), ends.end(), isOld), ends.end());
    for (int i = 0; c >= 0 && i < at(c).count; ++i) {
      const int state = c * kPerColumn + i;
      const TState& last = states[static_cast<std::size_t>(state)];
      if (last.isContinued || last.run < kDirectionNodes) continue;
      int first = state;
      for (int n = 1; n < kDirectionNodes; ++n) first = states[static_cast<std::size_t>(first)].previous;
      const TRidgeCandidate& stopped = candidate(state);
      ends.push_back({state, c, stopped.y, last.score, stopped.y - candidate(first).y, c - first / kPerColumn,
                      gainOf(stopped)});
    }
  }

  std::pmr::vector<TPathNode> trace(int last) const {
    std::pmr::vector<TPathNode> path(memory);
    path.reserve(columns.size());
    for (int s = last; s != kNone; s = states[static_cast<std::size_t>(s)].previous) {
      path.push_back({{s / kPerColumn, candidate(s)}, states[static_cast<std::size_t>(s)].step});
    }
    std::reverse(path.begin(), path.end());
    return path;
  }

  const std::pmr::vector<TRidgeCandidates>& columns;
  std::pmr::memory_resource* const memory;
  std::pmr::vector<TState> states;
  std::pmr::vector<TLinkColumn> links;  // the scores of the states, and more
  std::pmr::vector<TEnd> ends;
  std::int64_t leadBase = 0;
  std::array<TLeads, kReachColumns + 1> leads;  // by the distance in columns
};

}  // namespace

std::pmr::vector<TRidgePiece> findRidgePath(const std::pmr::vector<TRidgeCandidates>& columns,
                                            std::pmr::memory_resource* memory) {
  return cutPath(TPathSearch(columns, memory).run(), memory);
}

}  // namespace weld
