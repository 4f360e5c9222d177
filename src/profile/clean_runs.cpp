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

void takeUsable(TPointView points, TView<TCentreSource> sources, TCentres& centres) {
  centres.x.reserve(points.size());
  centres.y.reserve(points.size());
  centres.weight.reserve(points.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    const double x = static_cast<double>(points[i].x);
    const double y = static_cast<double>(points[i].y);
    if (!(std::abs(x) < kFarthestPx && std::abs(y) < kFarthestPx)) continue;
    if (!centres.x.empty() && !(x > centres.x.back())) continue;
    const double confidence = i < sources.size() ? static_cast<double>(sources[i].confidence) : 1.0;
    centres.x.push_back(x);
    centres.y.push_back(y);
    centres.weight.push_back(confidence > kLeastWeight ? std::min(confidence, 1.0) : kLeastWeight);
  }
}

bool startsRun(const TCentres& c, std::size_t i) {
  const double dx = c.x[i] - c.x[i - 1];
  const double dy = std::abs(c.y[i] - c.y[i - 1]);
  return dx > kLargestHolePx || dy > kStepPx + kStepPerColumn * std::min(dx, kMostColumns);
}

// Keeps the runs of at least this many centres. True where one of them is too short for the last pass.
bool dropShortRuns(TCentres& c, std::size_t shortest) {
  std::size_t kept = 0;
  std::size_t shortestKept = c.x.size();
  std::size_t first = 0;
  while (first < c.x.size()) {
    std::size_t last = first + 1;
    while (last < c.x.size() && !startsRun(c, last)) ++last;
    if (last - first >= shortest) shortestKept = std::min(shortestKept, last - first);
    if (last - first >= shortest && kept == first) {
      kept = last;
    } else if (last - first >= shortest) {
      for (std::size_t i = first; i < last; ++i, ++kept) {
        c.x[kept] = c.x[i];
        c.y[kept] = c.y[i];
        c.weight[kept] = c.weight[i];
      }
    }
    first = last;
  }
  c.x.resize(kept);
  c.y.resize(kept);
  c.weight.resize(kept);
  return shortestKept < kShortestRun;
}

}  // namespace

TCentres cleanCentres(TPointView points, TView<TCentreSource> sources, std::pmr::memory_resource* memory) {
  TCentres centres(memory);
  takeUsable(points, sources, centres);
  for (std::size_t shortest = 2; shortest <= kShortestRun; ++shortest) {
    const bool isShortLeft = dropShortRuns(centres, shortest);
    if (!isShortLeft) break;
  }
  centres.isBreak.resize(centres.x.size(), 0);
  for (std::size_t i = 1; i < centres.x.size(); ++i) centres.isBreak[i] = startsRun(centres, i) ? 1 : 0;
  return centres;
}

}  // namespace weld
