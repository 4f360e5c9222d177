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

TLentList<cv::Point2f> dropSteepJumps(const std::vector<cv::Point2f>& points, float slopeFactor,
                                      TScratch* scratch) {
  TLentList<cv::Point2f> kept(scratch, points.size());
  if (points.empty()) return kept;
  kept.push_back(points.front());
  for (std::size_t i = 1; i < points.size(); ++i) {
    const cv::Point2f step = points[i] - points[i - 1];
    if (std::abs(step.x) * slopeFactor > std::abs(step.y)) kept.push_back(points[i]);
  }
  return kept;
}

// Deliberate: the window reaches three points back but only two ahead.
TLentList<cv::Point2f> smoothStripe(const std::vector<cv::Point2f>& points, TScratch* scratch) {
  const std::size_t count = points.size();
  if (count >= kMinSmoothed && count < kMinAveraged) return {};
  TLentList<cv::Point2f> smoothed(scratch, count);
  smoothed.assign(points.begin(), points.end());
  for (std::size_t i = kWindowBefore; i + kWindowAfter < count; ++i) {
    cv::Point2f sum;
    for (std::size_t j = i - kWindowBefore; j <= i + kWindowAfter; ++j) sum += points[j];
    smoothed[i] = {sum.x / kWindowSize, sum.y / kWindowSize};
  }
  return smoothed;
}

TLentList<cv::Point2f> cleanStripe(const std::vector<cv::Point2f>& points, const TTrace& trace,
                                   TScratch* scratch) {
  if (!std::all_of(points.begin(), points.end(), isUsable)) return {};
  const TLentList<cv::Point2f> kept = dropSteepJumps(points, kJumpSlopeFactor, scratch);
  trace.addFilter("steep jumps", points.size(), kept.size());
  TLentList<cv::Point2f> smoothed = smoothStripe(kept, scratch);
  trace.addFilter("smoothing", kept.size(), smoothed.size());
  return smoothed;
}

TLentList<cv::Point2f> pointsBetween(const std::vector<cv::Point2f>& points, int fromX, int toX, TScratch* scratch,
                                     bool doColumnsAscend) {
  const auto from = static_cast<float>(fromX);
  const auto to = static_cast<float>(toX);
  TLentList<cv::Point2f> between(scratch, points.size());
  auto begin = points.begin();
  auto end = points.end();
  if (doColumnsAscend) {
    begin = std::partition_point(begin, end, [&](cv::Point2f p) { return p.x <= from; });
    end = std::partition_point(begin, end, [&](cv::Point2f p) { return p.x < to; });
  }
  std::copy_if(begin, end, std::back_inserter(between), [&](cv::Point2f p) { return from < p.x && p.x < to; });
  return between;
}

}  // namespace weld
