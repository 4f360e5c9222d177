#include "profile/clean_runs.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kFarthestPx = 1e6;
constexpr double kLargestHolePx = 12.0;  // a larger one starts a new run
constexpr double kStepPx = 7.0;          // between neighbours of a run; grows with the columns between them
constexpr double kStepPerColumn = 3.2;
constexpr double kMostColumns = 6.0;
constexpr double kLeastWeight = 0.05;
constexpr std::size_t kShortestRun = 4;  // centres

void resize(TCentres& centres, std::size_t count) {
  centres.x.resize(count);
  centres.y.resize(count);
  centres.weight.resize(count);
  centres.isBreak.resize(count, 0);
}

void takeUsable(TPointView points, TView<TCentreSource> sources, TCentres& centres) {
  resize(centres, points.size());
  std::size_t taken = 0;
  double lastX = -kFarthestPx;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const double x = static_cast<double>(points[i].x);
    const double y = static_cast<double>(points[i].y);
    if (!(x > lastX && x < kFarthestPx && std::abs(y) < kFarthestPx)) continue;
    const double confidence = i < sources.size() ? static_cast<double>(sources[i].confidence) : 1.0;
    centres.x[taken] = x;
    centres.y[taken] = y;
    centres.weight[taken++] = confidence > kLeastWeight ? std::min(confidence, 1.0) : kLeastWeight;
    lastX = x;
  }
  resize(centres, taken);
}

bool startsRun(const TCentres& c, std::size_t i) {
  const double dx = c.x[i] - c.x[i - 1];
  const double dy = std::abs(c.y[i] - c.y[i - 1]);
  return dx > kLargestHolePx || dy > kStepPx + kStepPerColumn * std::min(dx, kMostColumns);
}

void moveRun(TCentres& c, std::size_t from, std::size_t to, std::size_t count) {
  if (from == to) return;
  for (std::size_t i = 0; i < count; ++i) {
    c.x[to + i] = c.x[from + i];
    c.y[to + i] = c.y[from + i];
    c.weight[to + i] = c.weight[from + i];
    c.isBreak[to + i] = 0;
  }
  c.isBreak[to] = to > 0 && startsRun(c, to) ? 1 : 0;
}

// Keeps the runs of at least this many centres. True where one of them is too short for the last pass.
bool dropShortRuns(TCentres& c, std::size_t shortest) {
  const std::size_t total = c.x.size();
  std::size_t kept = 0;
  std::size_t shortestKept = total;
  for (std::size_t first = 0; first < total;) {
    std::size_t last = first + 1;
    while (last < total && c.isBreak[last] == 0) ++last;
    const std::size_t count = last - first;
    if (count >= shortest) {
      moveRun(c, first, kept, count);
      shortestKept = std::min(shortestKept, count);
      kept += count;
    }
    first = last;
  }
  resize(c, kept);
  return shortestKept < kShortestRun;
}

}  // namespace

TCentres cleanCentres(TPointView points, TView<TCentreSource> sources, std::pmr::memory_resource* memory) {
  TCentres centres(memory);
  takeUsable(points, sources, centres);
  for (std::size_t i = 1; i < centres.x.size(); ++i) centres.isBreak[i] = startsRun(centres, i) ? 1 : 0;
  for (std::size_t shortest = 2; shortest <= kShortestRun; ++shortest) {
    const bool isShortLeft = dropShortRuns(centres, shortest);
    if (!isShortLeft) break;
  }
  return centres;
}

}  // namespace weld
