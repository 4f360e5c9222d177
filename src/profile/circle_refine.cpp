#include "profile/circle_refine.h"

#include "support/normal_equations.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr int kSteps = 3;
constexpr double kFewest = 6.0;      // weight
constexpr double kMostChange = 0.6;  // of the radius in one step

using TDirection = TCircleFreedom::TDirection;

TNormalEquations sumUp(const TOrientedCentres& centres, TSpan span, const TCircle& c,
                       const TCircleFreedom& freedom, double invLimit2) {
  TNormalEquations sums(freedom.count);
  for (int i = span.first; i < span.last; ++i) {
    const auto at = static_cast<std::size_t>(i);
    const double dx = centres.x[at] - c.x;
    const double dy = centres.y[at] - c.y;
    const double distance = std::sqrt(dx * dx + dy * dy);
    const double offset = distance - c.r;
    const double u = 1.0 - offset * offset * invLimit2;
    if (!(u > 0.0) || !(distance > 0.0)) continue;
    const double perDistance = 1.0 / distance;
    TTriple slope{};
    for (std::size_t k = 0; k < freedom.count; ++k) {
      const TDirection& d = freedom.directions[k];
      slope[k] = (dx * d.x + dy * d.y) * perDistance + d.r;
    }
    sums.add(slope, offset, centres.weight[at] * u * u);
  }
  return sums;
}

TCircleSpread spreadOf(const TNormalEquations& sums, const TCircleFreedom& freedom) {
  TCircleSpread s;
  for (std::size_t k = 0; k < freedom.count; ++k) {
    const TTriple column = sums.covariances(k);
    for (std::size_t m = 0; m < freedom.count; ++m) {
      const TDirection& a = freedom.directions[k];
      const TDirection& b = freedom.directions[m];
      s.xx += column[m] * a.x * b.x;
      s.xy += column[m] * a.x * b.y;
      s.yy += column[m] * a.y * b.y;
      s.xr += column[m] * a.x * b.r;
      s.yr += column[m] * a.y * b.r;
      s.rr += column[m] * a.r * b.r;
    }
  }
  return s;
}

constexpr double kSearchPx = 1.0;  // scatter that the search of a radius allows for
constexpr double kRadii[] = {0.25, 0.35, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0, 1.15, 1.35, 1.7};  // over the first one
constexpr int kMostTried = 200;                                                           // centres

// Touches the line before or behind the point that it goes through.
std::optional<TCircle> touchingThrough(double r, const TTouch& touch) {
  const TLine& line = touch.line;
  const double side = touch.isCentreBelow ? 1.0 : -1.0;
  const double depth = side * line.offsetOf(touch.through.x, touch.through.y);
  const double square = depth * (2.0 * r - depth);
  if (!(depth > 0.0) || !(square > 0.0)) return std::nullopt;
  const double half = std::sqrt(square);
  const double along = line.alongOf(touch.through.x, touch.through.y) + (touch.isLeft ? -half : half);
  return TCircle{line.x + along * line.dx - side * r * line.dy, line.y + along * line.dy + side * r * line.dx, r};
}

double touchCost(const TOrientedCentres& centres, TSpan span, const TTouch& touch, const TCircle& c,
                 double noise2) {
  const TLine& line = touch.line;
  const double along = line.alongOf(c.x, c.y);
  const double touchX = line.x + along * line.dx;
  const int step = std::max(1, span.count() / kMostTried);
  double cost = 0.0;
  for (int i = span.first; i < span.last; i += step) {
    const cv::Point2d p = centres.at(i);
    double offset = 0.0;
    if ((p.x < touchX) == touch.isLeft) {
      offset = line.offsetOf(p.x, p.y);
    } else {
      offset = std::sqrt((p.x - c.x) * (p.x - c.x) + (p.y - c.y) * (p.y - c.y)) - c.r;
    }
    const double square = offset * offset;
    cost += square / (square + 8.0 * noise2);
  }
  return cost;
}

}  // namespace

TCircle searchTouching(const TOrientedCentres& centres, TSpan span, const TTouch& touch, const TCircle& start,
                       double noise2) {
  const double search2 = std::max(noise2, kSearchPx * kSearchPx);
  TCircle best = touching(start, touch.line, touch.isCentreBelow);
  double least = touchCost(centres, span, touch, best, search2);
  for (const double share : kRadii) {
    const std::optional<TCircle> circle = touchingThrough(share * start.r, touch);
    if (!circle) continue;
    const double cost = touchCost(centres, span, touch, *circle, search2);
    if (cost < least) {
      least = cost;
      best = *circle;
    }
  }
  return best;
}

TCircleFreedom freeCircle() {
  return {{{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}}, 3};
}

TCircleFreedom circleOnLine(const TLine& line, bool isCentreBelow) {
  const double side = isCentreBelow ? 1.0 : -1.0;
  return {{{{line.dx, line.dy, 0.0}, {-side * line.dy, side * line.dx, 1.0}, {}}}, 2};
}

TCircleFreedom circleBetween(const TLine& left, const TLine& right, bool isCentreBelow) {
  // The centre c keeps c . n = r to both lines.
  const double side = isCentreBelow ? 1.0 : -1.0;
  const double ax = -side * left.dy;
  const double ay = side * left.dx;
  const double bx = -side * right.dy;
  const double by = side * right.dx;
  const double det = ax * by - ay * bx;
  if (std::abs(det) < 1e-6) return {};
  return {{{{(by - ay) / det, (ax - bx) / det, 1.0}, {}, {}}}, 1};
}

TCircle touching(const TCircle& circle, const TLine& line, bool isCentreBelow) {
  const double side = isCentreBelow ? 1.0 : -1.0;
  const double shift = side * circle.r - line.offsetOf(circle.x, circle.y);
  TCircle moved = circle;
  moved.x -= shift * line.dy;
  moved.y += shift * line.dx;
  return moved;
}

std::optional<TCircle> touching(double r, const TLine& left, const TLine& right, bool isCentreBelow) {
  const TCircleFreedom freedom = circleBetween(left, right, isCentreBelow);
  if (freedom.count == 0) return std::nullopt;
  const double sine = left.dx * right.dy - left.dy * right.dx;
  const double along = ((right.x - left.x) * right.dy - (right.y - left.y) * right.dx) / sine;
  TCircle circle;
  circle.r = r;
  circle.x = left.x + along * left.dx + r * freedom.directions[0].x;
  circle.y = left.y + along * left.dy + r * freedom.directions[0].y;
  return circle;
}

TCircleFit fitCircle(const TOrientedCentres& centres, TSpan span, const TCircleStart& start, double noise2,
                     double cutOff) {
  const TCircleFreedom& freedom = start.freedom;
  TCircleFit fit;
  fit.circle = start.circle;
  if (freedom.count == 0) return fit;
  for (int step = 0; step <= kSteps; ++step) {
    TNormalEquations sums = sumUp(centres, span, fit.circle, freedom, 1.0 / (cutOff * cutOff * noise2));
    if (sums.weight() < kFewest || !sums.factor()) return fit;
    if (step == kSteps) {
      fit.spread = spreadOf(sums, freedom);
      break;
    }
    const TTriple change = sums.solution();
    double dr = 0.0;
    for (std::size_t k = 0; k < freedom.count; ++k) dr += change[k] * freedom.directions[k].r;
    const double share = std::min(1.0, kMostChange * fit.circle.r / std::max(std::abs(dr), 1e-12));
    for (std::size_t k = 0; k < freedom.count; ++k) {
      fit.circle.x += share * change[k] * freedom.directions[k].x;
      fit.circle.y += share * change[k] * freedom.directions[k].y;
      fit.circle.r += share * change[k] * freedom.directions[k].r;
    }
  }
  fit.isFound = fit.circle.r > 0.0 && std::isfinite(fit.circle.r) && fit.circle.r < 1e5;
  return fit;
}

}  // namespace weld
