#include "geometry/stripe_smoothing.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace weld {

namespace {

constexpr std::size_t kWindowBefore = 3;
constexpr std::size_t kWindowAfter = 2;
constexpr float kWindowSize = 6.0F;
constexpr std::size_t kMinAveraged = 7;
constexpr std::size_t kMinSmoothed = 4;
constexpr float kJumpSlopeFactor = 4.0F;
constexpr float kFarthestPx = 1e9F;

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

TPoints pointsBetween(TPointView points, const TColumnRange& columns, bool doColumnsAscend, TMemory* memory) {
  const auto from = static_cast<float>(columns.from);
  const auto to = static_cast<float>(columns.to);
  TPoints between(memory);
  const cv::Point2f* begin = points.begin();
  const cv::Point2f* end = points.end();
  if (doColumnsAscend) {
    begin = std::partition_point(begin, end, [&](cv::Point2f p) { return p.x <= from; });
    end = std::partition_point(begin, end, [&](cv::Point2f p) { return p.x < to; });
  }
  between.reserve(static_cast<std::size_t>(end - begin));
  std::copy_if(begin, end, std::back_inserter(between), [&](cv::Point2f p) { return from < p.x && p.x < to; });
  return between;
}

}  // namespace weld
