#include "geometry/stripe_smoothing.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace weld {

namespace {

constexpr std::size_t kWindowBefore = 3;
constexpr std::size_t kWindowAfter = 2;
constexpr float kWindowSize = 6.0F;
constexpr std::size_t kMinAveraged = 7;
constexpr std::size_t kMinSmoothed = 4;
constexpr float kJumpSlopeFactor = 4.0F;
constexpr float kFarthestPx = 1e9F;
constexpr std::size_t kLeastHeld = 512;
constexpr std::size_t kMostHeld = 10000000;
constexpr std::size_t kSortedShare = 16;  // a piece with more of the points is picked from all, not sorted

bool isUsable(cv::Point2f p) {
  return std::abs(p.x) < kFarthestPx && std::abs(p.y) < kFarthestPx;
}

}  // namespace

TPoints dropSteepJumps(TPointView points, float slopeFactor, TMemory* memory) {
  TPoints kept(memory);
  kept.reserve(points.size());
  if (points.empty()) return kept;
  kept.push_back(points.front());
  for (std::size_t i = 1; i < points.size(); ++i) {
    const cv::Point2f step = points[i] - points[i - 1];
    if (std::abs(step.x) * slopeFactor > std::abs(step.y)) kept.push_back(points[i]);
  }
  return kept;
}

// Deliberate: the window reaches three points back but only two ahead.
TPoints smoothStripe(TPointView points, TMemory* memory) {
  const std::size_t count = points.size();
  if (count >= kMinSmoothed && count < kMinAveraged) return TPoints(memory);
  TPoints smoothed(points.begin(), points.end(), memory);
  for (std::size_t i = kWindowBefore; i + kWindowAfter < count; ++i) {
    cv::Point2f sum;
    for (std::size_t j = i - kWindowBefore; j <= i + kWindowAfter; ++j) sum += points[j];
    smoothed[i] = {sum.x / kWindowSize, sum.y / kWindowSize};
  }
  return smoothed;
}

TPoints cleanStripe(const TFrame& frame, TPointView points) {
  if (!std::all_of(points.begin(), points.end(), isUsable)) return TPoints(frame.memory);
  const TPoints kept = dropSteepJumps(points, kJumpSlopeFactor, frame.memory);
  frame.trace.addFilter("steep jumps", points.size(), kept.size());
  TPoints smoothed = smoothStripe(kept, frame.memory);
  frame.trace.addFilter("smoothing", kept.size(), smoothed.size());
  return smoothed;
}

TPointsByColumn::TPointsByColumn(TPointView stripePoints, TMemory* memory)
    : points(stripePoints), byColumn(points.size(), memory) {
  std::iota(byColumn.begin(), byColumn.end(), 0);
  const auto isLeftOf = [&](int a, int b) { return points[a].x < points[b].x; };
  doColumnsAscend = std::is_sorted(byColumn.begin(), byColumn.end(), isLeftOf);
  if (!doColumnsAscend) std::sort(byColumn.begin(), byColumn.end(), isLeftOf);
}

TView<int> TPointsByColumn::find(const TColumnRange& columns) const {
  const auto from = static_cast<float>(columns.from);
  const auto to = static_cast<float>(columns.to);
  const auto begin =
      std::partition_point(byColumn.begin(), byColumn.end(), [&](int i) { return points[i].x <= from; });
  const auto end = std::partition_point(begin, byColumn.end(), [&](int i) { return points[i].x < to; });
  return TView<int>(byColumn).part(static_cast<std::size_t>(begin - byColumn.begin()),
                                   static_cast<std::size_t>(end - begin));
}

bool TPointsByColumn::canCut(TView<int> columns) const {
  if (doColumnsAscend) return true;
  std::size_t held = 0;
  for (std::size_t i = 0; i + 1 < columns.size() && held <= kMostHeld; ++i)
    held += std::max(kLeastHeld, find({columns[i], columns[i + 1]}).size());
  return held <= kMostHeld;
}

TPoints TPointsByColumn::between(const TColumnRange& columns) const {
  TMemory* const memory = byColumn.get_allocator().resource();
  const TView<int> found = find(columns);
  TPoints between(found.size(), memory);
  if (doColumnsAscend) {
    if (!found.empty()) std::copy_n(points.begin() + found.front(), found.size(), between.begin());
    return between;
  }
  if (found.size() * kSortedShare > points.size()) {
    const auto from = static_cast<float>(columns.from);
    const auto to = static_cast<float>(columns.to);
    std::copy_if(points.begin(), points.end(), between.begin(),
                 [&](cv::Point2f p) { return from < p.x && p.x < to; });
    return between;
  }
  TList<int> inOrder(found.begin(), found.end(), memory);
  std::sort(inOrder.begin(), inOrder.end());
  std::transform(inOrder.begin(), inOrder.end(), between.begin(), [&](int i) { return points[i]; });
  return between;
}

}  // namespace weld
