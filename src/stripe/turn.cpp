#include "stripe/turn.h"

#include "support/arc_tangent.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr float kSkippedPx = 4.0F;        // beside the column, where flare rounds a corner
constexpr std::size_t kLeastPoints = 10;  // on either side
constexpr double kStraightPx = 8.0;       // off a line,
constexpr double kStraightSlope = 0.04;   // and more by this for every column away: a plate may be bowed

// Least squares line through the centres in some columns; none through a few.
std::optional<TSlopeLine> lineBetween(TPointView stripe, float fromX, float toX) {
  const TPointView points = centresIn(stripe, {fromX, toX});
  if (points.size() < kLeastPoints) return std::nullopt;
  const auto n = static_cast<double>(points.size());
  cv::Point2d sum;
  for (const cv::Point2f p : points) sum += cv::Point2d(p);
  const cv::Point2d mean = sum / n;
  double xx = 0.0;
  double xy = 0.0;
  for (const cv::Point2f p : points) {
    const cv::Point2d d = cv::Point2d(p) - mean;
    xx += d.x * d.x;
    xy += d.x * d.y;
  }
  const double k = xy / guardDivisor(xx);
  return TSlopeLine{k, (sum.y - k * sum.x) / n};
}

}  // namespace

std::optional<double> turnAt(TPointView points, float x, float reachPx) {
  const auto left = lineBetween(points, x - reachPx, x - kSkippedPx);
  const auto right = lineBetween(points, x + kSkippedPx, x + reachPx);
  if (!left || !right) return std::nullopt;
  return std::abs(slopeToDeg(right->k) - slopeToDeg(left->k));
}

double straightShare(TPointView points, float x, float reachPx) {
  const auto line = lineBetween(points, x - reachPx, x + reachPx);
  if (!line) return 0.0;
  const auto isOn = [&](cv::Point2f p) {
    const double tolerancePx = kStraightPx + kStraightSlope * std::abs(static_cast<double>(p.x - x));
    return std::abs(line->k * static_cast<double>(p.x) + line->b - static_cast<double>(p.y)) <= tolerancePx;
  };
  return static_cast<double>(std::count_if(points.begin(), points.end(), isOn)) /
         static_cast<double>(points.size());
}

}  // namespace weld
