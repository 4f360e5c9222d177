#include "geometry/stripe_smoothing.h"

#include <opencv2/imgproc.hpp>

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

std::vector<cv::Point2f> dropSteepJumps(const std::vector<cv::Point2f>& points, float slopeFactor) {
  if (points.size() < 2) return points;
  std::vector<cv::Point2f> kept;
  kept.reserve(points.size());
  kept.push_back(points.front());
  for (std::size_t i = 1; i < points.size(); ++i) {
    const cv::Point2f step = points[i] - points[i - 1];
    if (std::abs(step.x) * slopeFactor > std::abs(step.y)) kept.push_back(points[i]);
  }
  return kept;
}

// Deliberate: the window reaches three points back but only two ahead.
std::vector<cv::Point2f> smoothStripe(const std::vector<cv::Point2f>& points) {
  const std::size_t count = points.size();
  if (count < kMinSmoothed) return points;
  if (count < kMinAveraged) return {};
  std::vector<cv::Point2f> smoothed = points;
  for (std::size_t i = kWindowBefore; i + kWindowAfter < count; ++i) {
    cv::Point2f sum;
    for (std::size_t j = i - kWindowBefore; j <= i + kWindowAfter; ++j) sum += points[j];
    smoothed[i] = {sum.x / kWindowSize, sum.y / kWindowSize};
  }
  return smoothed;
}

std::vector<cv::Point2f> cleanStripe(const std::vector<cv::Point2f>& points, const TTrace& trace) {
  if (!std::all_of(points.begin(), points.end(), isUsable)) return {};
  const std::vector<cv::Point2f> kept = dropSteepJumps(points, kJumpSlopeFactor);
  trace.addFilter("steep jumps", points.size(), kept.size());
  std::vector<cv::Point2f> smoothed = smoothStripe(kept);
  trace.addFilter("smoothing", kept.size(), smoothed.size());
  return smoothed;
}

std::vector<cv::Point> approximatePolygon(const std::vector<cv::Point2f>& points, double epsilonPx) {
  std::vector<cv::Point> vertices;
  const bool isUsableEpsilon = epsilonPx >= 0.0 && epsilonPx < kFarthestPx;
  if (points.empty() || !isUsableEpsilon) return vertices;
  cv::approxPolyDP(points, vertices, epsilonPx, false);
  return vertices;
}

std::vector<cv::Point2f> pointsBetween(const std::vector<cv::Point2f>& points, int fromX, int toX) {
  const auto from = static_cast<float>(fromX);
  const auto to = static_cast<float>(toX);
  std::vector<cv::Point2f> between;
  between.reserve(points.size());
  std::copy_if(points.begin(), points.end(), std::back_inserter(between),
               [&](cv::Point2f p) { return from < p.x && p.x < to; });
  return between;
}

}  // namespace weld
