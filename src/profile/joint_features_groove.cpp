// V and U grooves, and single bevels.
#include "profile/joint_features.h"

#include "support/arc_tangent.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kLeastDepthPx = 9.0;
constexpr double kDepthPerNoise = 6.0;
constexpr double kUnevenPx = 3.0;  // depths of the root edges that need no repair, and per noise

constexpr double kHolesPx = 0.7;  // of a stripe whose holes may have cut a root edge

double distance(cv::Point2d a, cv::Point2d b) {
  return std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y));
}

bool isDeep(const TProfileFit& fit, double noisePx) {
  return fit.measures.depthPx >= std::max(kLeastDepthPx, kDepthPerNoise * noisePx);
}

// The end of a flank carried along it to a depth under its plate.
cv::Point2d carried(const TLine& flank, cv::Point2d end, const TBase& base, double deeperPx) {
  const double slope = flank.dy * base.dx - flank.dx * base.dy;  // depth gained along the flank
  const double along = std::abs(slope) > 0.05 ? deeperPx / slope : 0.0;
  return {end.x + along * flank.dx, end.y + along * flank.dy};
}

struct TSides {
  const TFittedElement& leftPlate;
  const TFittedElement& leftFlank;
  const TFittedElement& rightFlank;
  const TFittedElement& rightPlate;
  TBase base;
};

TSides sidesOf(const TProfileLayout& layout) {
  const std::size_t n = layout.count();
  return {layout.elements[0], layout.elements[1], layout.elements[n - 2], layout.elements[n - 1],
          baseOf(layout.elements[0].lines.right, layout.elements[n - 1].lines.left)};
}

// Ends of both flanks: of a stripe with holes, the one that seems cut short goes on to the depth of the other.
// Ends that come close to one another meet.
void setOpenRoot(const TSides& s, const TStripeState& state, TProfileFit& fit) {
  const TLine& left = s.leftFlank.lines.right;
  const TLine& right = s.rightFlank.lines.left;
  cv::Point2d leftRoot = s.leftFlank.right;
  cv::Point2d rightRoot = s.rightFlank.left;
  double leftSigma = endSigma(left, s.leftFlank.noise2, state.unseenPx, leftRoot);
  double rightSigma = endSigma(right, s.rightFlank.noise2, state.unseenPx, rightRoot);
  const double lower = s.base.depthOf(s.rightPlate.left, rightRoot) - s.base.depthOf(s.leftPlate.right, leftRoot);
  const double evenPx = kUnevenPx + 2.0 * state.noisePx;
  const bool hasHoles = state.unseenPx > kHolesPx;
  if (hasHoles && lower > evenPx) leftRoot = carried(left, leftRoot, s.base, lower);
  if (hasHoles && -lower > evenPx) rightRoot = carried(right, rightRoot, s.base, -lower);
  const std::optional<cv::Point2d> corner = crossingOf(left, right);
  const cv::Point2d between = rightRoot - leftRoot;
  const double gapPx = std::sqrt(between.x * between.x + between.y * between.y);
  const bool hasCrossed = between.x * s.base.dx + between.y * s.base.dy <= 0.0;
  const double closedPx = kClosedPx + kClosedPerNoise * state.noisePx;
  const bool isClosed = hasCrossed || between.x * s.base.dx + between.y * s.base.dy < closedPx;
  if (isClosed && corner) {
    leftRoot = rightRoot = *corner;
    leftSigma = rightSigma = crossingSigma(left, s.leftFlank.noise2, right, s.rightFlank.noise2, *corner);
  }
  fit.measures.gapPx = isClosed ? 0.0 : gapPx;
  setFeature(fit, TFeature::leftRoot, leftRoot, leftSigma);
  setFeature(fit, TFeature::rightRoot, rightRoot, rightSigma);
  const double sigma = isClosed ? leftSigma : 0.5 * std::sqrt(leftSigma * leftSigma + rightSigma * rightSigma);
  setFeature(fit, TFeature::root, 0.5 * (leftRoot + rightRoot), sigma);
}

void setFlatRoot(const TProfileLayout& layout, const TSides& s, const TStripeState& state, TProfileFit& fit) {
  const bool isJoined = layout.profile->junctions[1].kind != TJunctionKind::jump;
  const TFittedElement& flat = layout.elements[2];
  const cv::Point2d leftRoot = isJoined ? flat.left : s.leftFlank.right;
  const cv::Point2d rightRoot = isJoined ? flat.right : s.rightFlank.left;
  const double leftSigma = isJoined
                               ? cornerSigma(layout, 1)
                               : endSigma(s.leftFlank.lines.right, s.leftFlank.noise2, state.unseenPx, leftRoot);
  const double rightSigma =
      isJoined ? cornerSigma(layout, 2)
               : endSigma(s.rightFlank.lines.left, s.rightFlank.noise2, state.unseenPx, rightRoot);
  setFeature(fit, TFeature::leftRoot, leftRoot, leftSigma);
  setFeature(fit, TFeature::rightRoot, rightRoot, rightSigma);
  setFeature(fit, TFeature::root, 0.5 * (leftRoot + rightRoot),
             0.5 * std::sqrt(leftSigma * leftSigma + rightSigma * rightSigma));
  fit.measures.gapPx = isJoined ? 0.0 : distance(leftRoot, rightRoot);
  if (layout.fillets[1].isFound) fit.measures.leftRadiusPx = layout.fillets[1].circle.r;
  if (layout.fillets[2].isFound) fit.measures.rightRadiusPx = layout.fillets[2].circle.r;
}

// Deepest point of an arc under the base.
void setRoundRoot(const TCircle& c, double sigma, const TBase& base, TProfileFit& fit) {
  setFeature(fit, TFeature::root, {c.x - c.r * base.dy, c.y + c.r * base.dx}, sigma);
  fit.measures.leftRadiusPx = fit.measures.rightRadiusPx = c.r;
}

// The root of whatever lies between the shoulders.
void setRoot(const TProfileLayout& layout, const TSides& s, const TStripeState& state, TProfileFit& fit) {
  for (std::size_t e = 1; e + 1 < layout.count(); ++e) {
    if (layout.range(e).kind != TElementKind::arc) continue;
    const TFittedElement& arc = layout.elements[e];
    return setRoundRoot(arc.arc.circle, std::sqrt(2.0 * arc.noise2) * arc.arc.centreSigma, s.base, fit);
  }
  if (layout.count() > 4) return setFlatRoot(layout, s, state, fit);
  if (layout.profile->junctions[1].kind != TJunctionKind::fillet) return setOpenRoot(s, state, fit);
  if (layout.fillets[1].isFound)
    return setRoundRoot(layout.fillets[1].circle, cornerSigma(layout, 1), s.base, fit);
  setFeature(fit, TFeature::root, s.leftFlank.right, cornerSigma(layout, 1));
}

}  // namespace

bool measureGroove(const TOrientedCentres& centres, const TProfileLayout& layout, const TStripeState& state,
                   TProfileFit& fit) {
  const TSides s = sidesOf(layout);
  const std::size_t n = layout.count();
  setFeature(fit, TFeature::leftShoulder, s.leftPlate.right, cornerSigma(layout, 0));
  setFeature(fit, TFeature::rightShoulder, s.rightPlate.left, cornerSigma(layout, n - 2));
  setRoot(layout, s, state, fit);
  setShoulderMeasures(centres, {layout.elements[1].span.first, layout.elements[n - 2].span.last}, fit);
  TJointMeasures& m = fit.measures;
  m.baseAngleDeg = arcTangent2(s.base.dy, s.base.dx) * kDegPerRad;
  m.mismatchPx = mismatchAt(s.leftPlate.lines.right, s.rightPlate.lines.left, fit.feature(TFeature::root).pos.x);
  if (layout.range(1).kind == TElementKind::line) m.leftAngleDeg = angleDegOf(s.leftFlank.lines.whole);
  if (layout.range(n - 2).kind == TElementKind::line) m.rightAngleDeg = angleDegOf(s.rightFlank.lines.whole);
  m.includedAngleDeg = 180.0 - (m.leftAngleDeg - m.rightAngleDeg);
  return isDeep(fit, state.noisePx);
}

bool measureBevel(const TOrientedCentres& centres, const TProfileLayout& layout, const TStripeState& state,
                  TProfileFit& fit) {
  const std::size_t n = layout.count();
  const bool isLeft = layout.profile->junctions[0].kind == TJunctionKind::cross;
  const auto at = [&](std::size_t e) -> const TFittedElement& { return layout.elements[isLeft ? e : n - 1 - e]; };
  const auto inner = [&](const TFittedElement& e) { return isLeft ? e.right : e.left; };
  const auto innerLine = [&](const TFittedElement& e) -> const TLine& {
    return isLeft ? e.lines.right : e.lines.left;
  };
  const TFittedElement& plate = at(0);
  const TFittedElement& flank = at(1);
  const TFittedElement& bottom = at(n - 2);  // the flank itself, or a flat
  const TFittedElement& wallPlate = at(n - 1);
  const TLine& wallLine = isLeft ? wallPlate.lines.left : wallPlate.lines.right;
  const cv::Point2d wallTop = isLeft ? wallPlate.left : wallPlate.right;
  const TBase base =
      baseOf(isLeft ? plate.lines.right : wallPlate.lines.right, isLeft ? wallPlate.lines.left : plate.lines.left);
  const double topSigma = endSigma(wallLine, wallPlate.noise2, state.unseenPx, wallTop);

  const cv::Point2d end = inner(bottom);
  const double deep = wallLine.offsetOf(end.x, end.y) - wallLine.offsetOf(wallTop.x, wallTop.y);
  cv::Point2d foot(wallTop.x - deep * wallLine.dy, wallTop.y + deep * wallLine.dx);
  cv::Point2d flankRoot = inner(flank);
  double rootSigma = endSigma(innerLine(bottom), bottom.noise2, state.unseenPx, end);
  const double gapPx = (isLeft ? 1.0 : -1.0) * ((foot.x - end.x) * wallLine.dx + (foot.y - end.y) * wallLine.dy);
  const bool isClosed = gapPx < kClosedPx + kClosedPerNoise * state.noisePx;
  if (isClosed) {  // where the bottom meets the wall
    const TLine wall{wallTop.x, wallTop.y, -wallLine.dy, wallLine.dx, 0.0, 0.0, 0.0};
    const std::optional<cv::Point2d> corner = crossingOf(innerLine(bottom), wall);
    if (corner) foot = *corner;
    if (n == 3) flankRoot = foot;
    rootSigma = topSigma / std::max(0.2, std::abs(innerLine(bottom).dx));
  }
  fit.measures.gapPx = isClosed ? 0.0 : gapPx;
  setFeature(fit, isLeft ? TFeature::leftShoulder : TFeature::rightShoulder, inner(plate),
             cornerSigma(layout, isLeft ? 0 : n - 2));
  setFeature(fit, isLeft ? TFeature::rightShoulder : TFeature::leftShoulder, wallTop, topSigma);
  setFeature(fit, isLeft ? TFeature::leftRoot : TFeature::rightRoot, flankRoot, rootSigma);
  setFeature(fit, isLeft ? TFeature::rightRoot : TFeature::leftRoot, foot, rootSigma);
  setFeature(fit, TFeature::root, 0.5 * (flankRoot + foot),
             isClosed ? rootSigma : 0.5 * std::sqrt(rootSigma * rootSigma + topSigma * topSigma));
  setShoulderMeasures(centres, {layout.elements[1].span.first, layout.elements[n - 2].span.last}, fit);
  TJointMeasures& m = fit.measures;
  m.baseAngleDeg = arcTangent2(base.dy, base.dx) * kDegPerRad;
  m.mismatchPx = mismatchAt(layout.elements[0].lines.right, layout.elements[n - 1].lines.left,
                            fit.feature(TFeature::root).pos.x);
  const double flankDeg = angleDegOf(flank.lines.whole);
  (isLeft ? m.leftAngleDeg : m.rightAngleDeg) = flankDeg;
  m.includedAngleDeg = 90.0 - std::abs(flankDeg - angleDegOf(wallLine));
  return isDeep(fit, state.noisePx);
}

}  // namespace weld
