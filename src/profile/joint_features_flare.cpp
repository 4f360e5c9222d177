// Flare V and flare bevel: where round surfaces come closest.
#include "profile/joint_features.h"

#include "support/arc_tangent.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kOverlapPerNoise = 4.0;    // of circles that touch, by noise
constexpr double kLeastPlateCosine = 0.96;  // of the angle between a plate and the common tangent: 16 degrees
constexpr double kOverlapPerRadius = 0.25;

// Of the point of a circle that faces away from the base.
cv::Point2d topOf(const TCircle& c, const TBase& base) {
  return {c.x + c.r * base.dy, c.y - c.r * base.dx};
}

bool mayOverlap(double gapPx, double smallestR, double noisePx) {
  return gapPx >= -(kOverlapPerNoise * noisePx + kOverlapPerRadius * smallestR);
}

// Common upper tangent: from the left to the right circle, as a direction.
TBase upperTangent(const TCircle& a, const TCircle& b) {
  const double dx = b.x - a.x;
  const double dy = b.y - a.y;
  const double d = std::sqrt(dx * dx + dy * dy);
  const double sine = std::clamp((b.r - a.r) / d, -0.99, 0.99);  // the tangent rises towards the larger circle
  const double cosine = std::sqrt(1.0 - sine * sine);
  const double ux = dx / d;
  const double uy = dy / d;
  return {ux * cosine + uy * sine, uy * cosine - ux * sine};
}

bool measureTwoTubes(const TOrientedCentres& centres, const TProfileLayout& layout, const TStripeState& state,
                     TProfileFit& fit) {
  const std::size_t n = layout.count();
  const std::size_t first = layout.range(0).kind == TElementKind::line ? 1 : 0;
  const TFittedElement& left = layout.elements[first];
  const TFittedElement& right = layout.elements[first + 1];
  const TCircle& a = left.arc.circle;
  const TCircle& b = right.arc.circle;
  const cv::Point2d across(b.x - a.x, b.y - a.y);
  const double apart = std::sqrt(across.x * across.x + across.y * across.y);
  const double gapPx = apart - a.r - b.r;
  if (!(across.x > 0.0) || !mayOverlap(gapPx, std::min(a.r, b.r), state.noisePx)) return false;
  const cv::Point2d u(across.x / apart, across.y / apart);
  const bool hasLeft = first == 1;
  const bool hasRight = layout.range(n - 1).kind == TElementKind::line;
  TBase base = upperTangent(a, b);
  for (const std::size_t e : {std::size_t{0}, n - 1}) {  // what leaves the common tangent is the back of a tube
    if (layout.range(e).kind != TElementKind::line) continue;
    const TLine& plate = e == 0 ? layout.elements[e].lines.right : layout.elements[e].lines.left;
    if (plate.dx * base.dx + plate.dy * base.dy < kLeastPlateCosine) return false;
  }
  if (hasLeft && hasRight) {
    base = baseOf(layout.elements[0].lines.right, layout.elements[n - 1].lines.left);
  } else if (hasLeft || hasRight) {
    const TLine& plate = hasLeft ? layout.elements[0].lines.right : layout.elements[n - 1].lines.left;
    base = {plate.dx, plate.dy};
  }
  const cv::Point2d leftRoot(a.x + a.r * u.x, a.y + a.r * u.y);
  const cv::Point2d rightRoot(b.x - b.r * u.x, b.y - b.r * u.y);
  const double leftSigma = arcSigma(state, layout, first, leftRoot);
  const double rightSigma = arcSigma(state, layout, first + 1, rightRoot);
  const cv::Point2d leftShoulder = hasLeft ? left.left : topOf(a, base);
  const cv::Point2d rightShoulder = hasRight ? right.right : topOf(b, base);
  setFeature(fit, TFeature::leftRoot, leftRoot, leftSigma);
  setFeature(fit, TFeature::rightRoot, rightRoot, rightSigma);
  setFeature(fit, TFeature::root, 0.5 * (leftRoot + rightRoot),
             0.5 * std::sqrt(leftSigma * leftSigma + rightSigma * rightSigma));
  setFeature(fit, TFeature::leftShoulder, leftShoulder, arcSigma(state, layout, first, leftShoulder));
  setFeature(fit, TFeature::rightShoulder, rightShoulder, arcSigma(state, layout, first + 1, rightShoulder));
  setShoulderMeasures(centres, {left.span.first, right.span.last}, fit);
  TJointMeasures& m = fit.measures;
  m.baseAngleDeg = arcTangent2(base.dy, base.dx) * kDegPerRad;
  m.gapPx = std::max(0.0, gapPx);
  m.leftRadiusPx = a.r;
  m.rightRadiusPx = b.r;
  if (hasLeft && hasRight) {
    m.mismatchPx = mismatchAt(layout.elements[0].lines.right, layout.elements[n - 1].lines.left,
                              fit.feature(TFeature::root).pos.x);
  }
  return true;
}

bool measureTubeOnLine(const TProfileLayout& layout, const TStripeState& state, TProfileFit& fit) {
  const std::size_t n = layout.count();
  const std::size_t tubeAt = layout.range(0).kind == TElementKind::arc       ? 0
                             : layout.range(n - 1).kind == TElementKind::arc ? n - 1
                                                                             : 1;
  const bool isLeft = tubeAt == 0 || (n == 3 && layout.range(0).role == TElementRole::plate);
  const TFittedElement& tube = layout.elements[tubeAt];
  const TFittedElement& member = layout.elements[isLeft ? n - 1 : 0];
  const TLine& line = isLeft ? member.lines.left : member.lines.right;
  const TCircle& c = tube.arc.circle;
  const double above = -line.offsetOf(c.x, c.y);
  const double gapPx = above - c.r;
  if (!mayOverlap(gapPx, c.r, state.noisePx)) return false;
  const TBase base{line.dx, line.dy};
  const cv::Point2d foot(c.x - above * base.dy, c.y + above * base.dx);
  const cv::Point2d nearest(c.x - c.r * base.dy, c.y + c.r * base.dx);
  const double sigma = arcSigma(state, layout, tubeAt, nearest);
  const double footSigma = lineSigma(state, line, member.noise2, foot);
  setFeature(fit, TFeature::root, 0.5 * (foot + nearest), 0.5 * std::sqrt(sigma * sigma + footSigma * footSigma));
  setFeature(fit, isLeft ? TFeature::leftRoot : TFeature::rightRoot, nearest, sigma);
  setFeature(fit, isLeft ? TFeature::rightRoot : TFeature::leftRoot, foot, footSigma);
  const bool hasPlate = n == 3;
  const cv::Point2d top = !hasPlate ? topOf(c, base) : isLeft ? tube.left : tube.right;
  setFeature(fit, isLeft ? TFeature::leftShoulder : TFeature::rightShoulder, top,
             arcSigma(state, layout, tubeAt, top));
  TJointMeasures& m = fit.measures;
  (isLeft ? m.leftRadiusPx : m.rightRadiusPx) = c.r;
  (isLeft ? m.rightAngleDeg : m.leftAngleDeg) = angleDegOf(member.lines.whole);
  m.gapPx = std::max(0.0, gapPx);
  m.baseAngleDeg = angleDegOf(member.lines.whole);
  return true;
}

}  // namespace

bool measureFlare(const TOrientedCentres& centres, const TProfileLayout& layout, const TStripeState& state,
                  TProfileFit& fit) {
  return layout.profile->measuring == TMeasuring::flareV ? measureTwoTubes(centres, layout, state, fit)
                                                         : measureTubeOnLine(layout, state, fit);
}

}  // namespace weld
