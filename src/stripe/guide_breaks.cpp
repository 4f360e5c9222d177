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
void findBreaksInOrder(const std::vector<cv::Point>& guide, int maxStretchPx, std::vector<TGuideBreak>& breaks) {
  breaks.push_back({guide.front(), 0});
  for (std::size_t i = 1; i < guide.size(); ++i) {
    if (guide[i].x - breaks.back().point.x > maxStretchPx) breaks.push_back({guide[i], static_cast<int>(i)});
  }
}

// How many points lie left of every column, and of the end of the last one.
std::vector<int> countPointsBefore(const std::vector<cv::Point>& guide, int columns) {
  std::vector<int> before(static_cast<std::size_t>(columns) + 1);
  for (const cv::Point p : guide) ++before[static_cast<std::size_t>(p.x) + 1];
  std::partial_sum(before.begin(), before.end(), before.begin());
  return before;
}

// The point of a column that plain exchanges leave in front, in one pass instead of a quadratic number of steps;
// docs/algorithms.md tells why. Read from the left, the column's points queue up, and every point that lies left
// of the column sends the first of the queue to its end. Reading back from the final front finds the point that
// was it.
cv::Point firstAfterExchanges(const std::vector<cv::Point>& guide, int column, int pointsInColumn) {
  int queueLength = pointsInColumn;
  int place = 0;  // in the queue
  int turns = 0;  // of the queue, not yet taken back
  for (auto p = guide.rbegin();; ++p) {
    turns += p->x < column ? 1 : 0;
    if (p->x != column) continue;
    place = (place + turns) % queueLength;
    turns = 0;
    const bool joinsHere = place == queueLength - 1;
    if (joinsHere) return *p;
    --queueLength;
  }
}

void findBreaksInAnyOrder(const std::vector<cv::Point>& guide, int columns, int maxStretchPx,
                          std::vector<TGuideBreak>& breaks) {
  const std::vector<int> before = countPointsBefore(guide, columns);
  for (int x = 0; x < columns; ++x) {
    const int first = before[static_cast<std::size_t>(x)];
    const int count = before[static_cast<std::size_t>(x) + 1] - first;
    if (count == 0 || (!breaks.empty() && x - breaks.back().point.x <= maxStretchPx)) continue;
    breaks.push_back({firstAfterExchanges(guide, x, count), first});
  }
}

}  // namespace

void findGuideBreaks(const std::vector<cv::Point>& guide, int columns, int maxStretchPx,
                     std::vector<TGuideBreak>& breaks) {
  breaks.clear();
  breaks.reserve(static_cast<std::size_t>(columns / maxStretchPx) + 1);
  if (std::is_sorted(guide.begin(), guide.end(), isLeftOf)) {
    findBreaksInOrder(guide, maxStretchPx, breaks);
  } else {
    findBreaksInAnyOrder(guide, columns, maxStretchPx, breaks);
  }
}

}  // namespace weld
