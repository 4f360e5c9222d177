#include "stripe/guide_breaks.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace weld {
namespace {

bool isLeftOf(cv::Point a, cv::Point b) {
  return a.x < b.x;
}

// The usual guide, which is a previous result: nothing to exchange.
void findBreaksInOrder(TIntPointView guide, int maxStretchPx, TList<TGuideBreak>& breaks) {
  breaks.push_back({guide.front(), 0});
  for (std::size_t i = 1; i < guide.size(); ++i) {
    if (guide[i].x - breaks.back().point.x > maxStretchPx) breaks.push_back({guide[i], static_cast<int>(i)});
  }
}

// How many points lie left of every column, and of the end of the last one.
TList<int> countPointsBefore(TIntPointView guide, int columns, TMemory* memory) {
  TList<int> before(static_cast<std::size_t>(columns) + 1, memory);
  for (const cv::Point p : guide) ++before[static_cast<std::size_t>(p.x) + 1];
  std::partial_sum(before.begin(), before.end(), before.begin());
  return before;
}

// The points of a break's column, as plain exchanges move them. Read from the left, they queue up, and every point
// left of the column sends the first of the queue to its end; docs/algorithms.md tells why. Reading back from the
// point that is in front in the end finds it where it joined the queue.
struct TBreakQueue {
  int column = 0;
  int length = 0;
  int place = 0;  // of the point that is sought
  int turns = 0;  // taken back so far
  bool isFound = false;

  // Goes back to before the last point of the queue joined. True when that is the point sought.
  bool stepBack(int turnsBehind) {
    place = (place + turnsBehind - turns) % length;
    turns = turnsBehind;
    isFound = place == length - 1;
    --length;
    return isFound;
  }
};

// One pass for all breaks, which counts the points between them.
void findFrontPoints(TIntPointView guide, TView<int> breakOfColumn, TList<TBreakQueue>& queues,
                     TList<TGuideBreak>& breaks) {
  TList<int> pointsFrom(breaks.size(),
                        breaks.get_allocator().resource());  // in the columns from a break on up to the next one
  std::size_t missing = breaks.size();
  for (const cv::Point* p = guide.end() - 1; missing > 0; --p) {
    const auto i = static_cast<std::size_t>(breakOfColumn[static_cast<std::size_t>(p->x)]);
    ++pointsFrom[i];
    TBreakQueue& queue = queues[i];
    if (p->x != queue.column || queue.isFound) continue;
    if (!queue.stepBack(
            std::accumulate(pointsFrom.begin(), pointsFrom.begin() + static_cast<std::ptrdiff_t>(i), 0)))
      continue;
    breaks[i].point = *p;
    --missing;
  }
}

void findBreaksInAnyOrder(TIntPointView guide, int columns, int maxStretchPx, TList<TGuideBreak>& breaks) {
  TMemory* const memory = breaks.get_allocator().resource();
  const TList<int> before = countPointsBefore(guide, columns, memory);
  TList<TBreakQueue> queues(memory);
  queues.reserve(breaks.capacity());
  TList<int> breakOfColumn(static_cast<std::size_t>(columns), memory);  // the last one at or left of it
  for (int x = 0; x < columns; ++x) {
    const int first = before[static_cast<std::size_t>(x)];
    const int count = before[static_cast<std::size_t>(x) + 1] - first;
    const bool isBreak = count > 0 && (queues.empty() || x - queues.back().column > maxStretchPx);
    if (isBreak) {
      queues.push_back({x, count});
      breaks.push_back({{}, first});
    }
    breakOfColumn[static_cast<std::size_t>(x)] = static_cast<int>(queues.size()) - 1;
  }
  findFrontPoints(guide, breakOfColumn, queues, breaks);
}

}  // namespace

TList<TGuideBreak> findGuideBreaks(TIntPointView guide, int columns, int maxStretchPx, TMemory* memory) {
  TList<TGuideBreak> breaks(memory);
  breaks.reserve(static_cast<std::size_t>(columns / maxStretchPx) + 1);
  if (std::is_sorted(guide.begin(), guide.end(), isLeftOf)) {
    findBreaksInOrder(guide, maxStretchPx, breaks);
  } else {
    findBreaksInAnyOrder(guide, columns, maxStretchPx, breaks);
  }
  return breaks;
}

}  // namespace weld
