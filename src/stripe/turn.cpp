#include "stripe/turn.h"

#include "support/arc_tangent.h"
#include "support/line_math.h"

#include <cmath>

namespace weld {

namespace {

constexpr float kSkippedPx = 4.0F;  // beside the column, where flare rounds a corner
constexpr int kLeastPoints = 10;    // on either side

// Angle of the centres in some columns, least squares, degrees; none of a few.
std::optional<double> angleBetween(TPointView points, float fromX, float toX) {
  double n = 0.0;
  cv::Point2d sum;
  for (const cv::Point2f p : points) {
    if (p.x < fromX || p.x > toX) continue;
    sum += cv::Point2d(p);
    n += 1.0;
  }
  if (n < kLeastPoints) return std::nullopt;
  double xx = 0.0;
  double xy = 0.0;
  for (const cv::Point2f p : points) {
    if (p.x < fromX || p.x > toX) continue;
    const cv::Point2d d = cv::Point2d(p) - sum / n;
    xx += d.x * d.x;
    xy += d.x * d.y;
  }
  return slopeToDeg(xy / guardDivisor(xx));
}

}  // namespace

std::optional<double> turnAt(TPointView points, float x, float reachPx) {
  const auto left = angleBetween(points, x - reachPx, x - kSkippedPx);
  const auto right = angleBetween(points, x + kSkippedPx, x + reachPx);
  if (!left || !right) return std::nullopt;
  return std::abs(*right - *left);
}

}  // namespace weld
