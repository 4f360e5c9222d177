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

bool isUsable(cv::Point2f p) { return std::abs(p.x) < kFarthestPx && std::abs(p.y) < kFarthestPx; }

std::vector<float> coordinates(const std::vector<cv::Point2f>& points, float cv::Point2f::*axis) {
  std::vector<float> values;
  values.reserve(points.size());
  for (const cv::Point2f& p : points) values.push_back(p.*axis);
  return values;
}

}  // namespace

std::vector<cv::Point2f> dropSteepJumps(const std::vector<cv::Point2f>& points, float slopeFactor) {
  if (points.size() < 2) return points;
  std::vector<cv::Point2f> kept{points.front()};
  kept.reserve(points.size());
  for (std::size_t i = 1; i < points.size(); ++i) {
    const cv::Point2f step = points[i] - points[i - 1];
    if (std::abs(step.x) * slopeFactor > std::abs(step.y)) kept.push_back(points[i]);
  }
  return kept;
}

// Deliberate: the window reaches three values back but only two ahead.
std::vector<float> movingAverage6(const std::vector<float>& values) {
  const std::size_t count = values.size();
  if (count < kMinAveraged) return {};
  std::vector<float> averaged = values;
  for (std::size_t i = kWindowBefore; i + kWindowAfter < count; ++i) {
    float sum = 0.0F;
    for (std::size_t j = i - kWindowBefore; j <= i + kWindowAfter; ++j) sum += values[j];
    averaged[i] = sum / kWindowSize;
  }
  return averaged;
}

std::vector<cv::Point2f> smoothStripe(const std::vector<cv::Point2f>& points) {
  if (points.size() < kMinSmoothed) return points;
  const std::vector<float> xs = movingAverage6(coordinates(points, &cv::Point2f::x));
  const std::vector<float> ys = movingAverage6(coordinates(points, &cv::Point2f::y));
  std::vector<cv::Point2f> smoothed;
  smoothed.reserve(xs.size());
  std::transform(xs.begin(), xs.end(), ys.begin(), std::back_inserter(smoothed),
                 [](float x, float y) { return cv::Point2f{x, y}; });
  return smoothed;
}

std::vector<cv::Point2f> cleanStripe(const std::vector<cv::Point2f>& points) {
  if (!std::all_of(points.begin(), points.end(), isUsable)) return {};
  return smoothStripe(dropSteepJumps(points, kJumpSlopeFactor));
}

std::vector<cv::Point> approximatePolygon(const std::vector<cv::Point2f>& points, double epsilonPx) {
  std::vector<cv::Point> vertices;
  if (points.empty()) return vertices;
  cv::approxPolyDP(points, vertices, epsilonPx, false);
  return vertices;
}

std::vector<cv::Point2f> pointsBetween(const std::vector<cv::Point2f>& points, int fromX, int toX) {
  const auto from = static_cast<float>(fromX);
  const auto to = static_cast<float>(toX);
  std::vector<cv::Point2f> between;
  std::copy_if(points.begin(), points.end(), std::back_inserter(between),
               [&](cv::Point2f p) { return from < p.x && p.x < to; });
  return between;
}

}  // namespace weld
