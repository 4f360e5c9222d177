// V and U grooves, and single bevels.
#include "profile/joint_features.h"

#include "support/arc_tangent.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kLeastDepthPx = 9.0;
constexpr double kDepthPerNoise = 6.0;
constexpr double kUnevenPx = 3.0;     // depths of the root edges that need no repair, and per noise
constexpr double kUnlikeShare = 0.3;  // of the larger depth, by which two whole flanks never differ
constexpr double kNoLimit = 1e9;
constexpr double kCarriedShare = 0.1;  // standard deviation of an edge over the length that was added to it

constexpr double kHiddenPx = 2.5;  // columns from the end of the bottom to a wall that leans over it
constexpr double kHolesPx = 0.7;   // of a stripe whose holes may have cut a root edge

double distance(cv::Point2d a, cv::Point2d b) {
  return std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y));
}

// The end of a flank carried along it to a depth under its plate.
cv::Point2d carried(const TLine& flank, cv::Point2d end, const TBase& base, double deeperPx) {
  const double slope = flank.dy * base.dx - flank.dx * base.dy;  // depth gained along the flank
  const double along = std::abs(slope) > 0.05 ? deeperPx / slope : 0.0;
  return {end.x + along * flank.dx, end.y + along * flank.dy};
}

// Where a flank ends at the root.
struct TRootEdge {
  const TLine& flank;
  cv::Point2d& pos;
  double& sigmaPx;
  double depthPx;  // under its plate
};

// Of edges at unlike depths the shorter flank goes on: where no two whole flanks differ as much, and of a stripe
// with holes from a few pixels on.
void evenOut(const TRootEdge& left, const TRootEdge& right, const TBase& base, double evenPx) {
  const TRootEdge& shorter = left.depthPx < right.depthPx ? left : right;
  const double deepest = std::max(left.depthPx, right.depthPx);
  const double deeperPx = deepest - shorter.depthPx;
  if (deeperPx <= std::min(evenPx, kUnlikeShare * deepest)) return;
  const cv::Point2d whole = carried(shorter.flank, shorter.pos, base, deeperPx);
  const double addedPx = kCarriedShare * distance(shorter.pos, whole);
  shorter.sigmaPx = std::sqrt(shorter.sigmaPx * shorter.sigmaPx + addedPx * addedPx);
  shorter.pos = whole;
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

void setOpening(TProfileFit& fit, const TOpening& opening) {
  setFeature(fit, TFeature::leftRoot, opening.left.pos, opening.left.sigmaPx);
  setFeature(fit, TFeature::rightRoot, opening.right.pos, opening.right.sigmaPx);
  setFeature(fit, TFeature::root, opening.middle.pos, opening.middle.sigmaPx);
  fit.measures.gapPx = opening.gapPx;
}

void setFlatRoot(const TProfileLayout& layout, const TSides& s, const TStripeState& state, TProfileFit& fit) {
  const bool isJoined = layout.profile->junctions[1].kind != TJunctionKind::jump;
  const TFittedElement& flat = layout.elements[2];
  cv::Point2d leftRoot = isJoined ? flat.left : s.leftFlank.right;
  cv::Point2d rightRoot = isJoined ? flat.right : s.rightFlank.left;
  const double leftSeen = isJoined ? cornerSigma(state, layout, 1)
                                   : endSigma(state, s.leftFlank.lines.right, s.leftFlank.noise2, leftRoot);
  const double rightSeen = isJoined ? cornerSigma(state, layout, 2)
                                    : endSigma(state, s.rightFlank.lines.left, s.rightFlank.noise2, rightRoot);
  double leftSigma = withRounding(leftSeen, layout, 1, 2);
  double rightSigma = withRounding(rightSeen, layout, 2, 1);
  if (!isJoined) {
    evenOut({s.leftFlank.lines.right, leftRoot, leftSigma, s.base.depthOf(s.leftPlate.right, leftRoot)},
            {s.rightFlank.lines.left, rightRoot, rightSigma, s.base.depthOf(s.rightPlate.left, rightRoot)}, s.base,
            kNoLimit);
  }
  setFeature(fit, TFeature::leftRoot, leftRoot, leftSigma);
  setFeature(fit, TFeature::rightRoot, rightRoot, rightSigma);
  setFeature(fit, TFeature::root, 0.5 * (leftRoot + rightRoot),
             0.5 * std::sqrt(leftSigma * leftSigma + rightSigma * rightSigma));
  fit.measures.gapPx = isJoined ? 0.0 : distance(leftRoot, rightRoot);
  if (!isJoined) {  // the piece behind the gap
    setFeature(fit, TFeature::leftEdge, flat.left, endSigma(state, flat.lines.left, flat.noise2, flat.left));
    setFeature(fit, TFeature::rightEdge, flat.right, endSigma(state, flat.lines.right, flat.noise2, flat.right));
  }
  if (layout.fillets[1].isFound) fit.measures.leftRadiusPx = layout.fillets[1].circle.r;
  if (layout.fillets[2].isFound) fit.measures.rightRadiusPx = layout.fillets[2].circle.r;
}

// A flat that is open somewhere.
void setSplitRoot(const TProfileLayout& layout, const TStripeState& state, TProfileFit& fit) {
  const TFittedElement& left = layout.elements[2];
  const TFittedElement& right = layout.elements[3];
  const double leftSigma = endSigma(state, left.lines.right, left.noise2, left.right);
  const double rightSigma = endSigma(state, right.lines.left, right.noise2, right.left);
  setFeature(fit, TFeature::leftRoot, left.right, leftSigma);
  setFeature(fit, TFeature::rightRoot, right.left, rightSigma);
  setFeature(fit, TFeature::root, 0.5 * (left.right + right.left),
             0.5 * std::sqrt(leftSigma * leftSigma + rightSigma * rightSigma));
  fit.measures.gapPx = distance(left.right, right.left);
  if (layout.fillets[1].isFound) fit.measures.leftRadiusPx = layout.fillets[1].circle.r;
  if (layout.fillets[3].isFound) fit.measures.rightRadiusPx = layout.fillets[3].circle.r;
}

// Deepest point of an arc under the base.
void setRoundRoot(const TCircle& c, double sigma, const TBase& base, TProfileFit& fit) {
  setFeature(fit, TFeature::root, {c.x - c.r * base.dy, c.y + c.r * base.dx}, sigma);
  fit.measures.leftRadiusPx = fit.measures.rightRadiusPx = c.r;
}

// The root of whatever lies between the shoulders.
void setRoot(const TOrientedCentres& centres, const TProfileLayout& layout, const TSides& s,
             const TStripeState& state, TProfileFit& fit) {
  for (std::size_t e = 1; e + 1 < layout.count(); ++e) {
    if (layout.range(e).kind != TElementKind::arc) continue;
    const TCircle& c = layout.elements[e].arc.circle;
    return setRoundRoot(c, arcSigma(state, layout, e, {c.x, c.y + c.r}), s.base, fit);
  }
  if (layout.count() == 6) return setSplitRoot(layout, state, fit);
  const bool isRounded = layout.profile->junctions[1].kind == TJunctionKind::fillet;
  if (layout.count() == 5) {
    const auto hole = isRounded ? holeIn(centres, layout.elements[2], state) : std::nullopt;
    setFlatRoot(layout, s, state, fit);
    if (hole) setOpening(fit, *hole);
    return;
  }
  if (!isRounded) {
    return setOpening(fit, openRoot(layout, 1, s.base, state));
  }
  if (layout.fillets[1].isFound)
    return setRoundRoot(layout.fillets[1].circle, cornerSigma(state, layout, 1), s.base, fit);
  setFeature(fit, TFeature::root, s.leftFlank.right, cornerSigma(state, layout, 1));
}

// A bevel seen from its flank: whether that is on the left or on the right.
struct TBevel {
  const TProfileLayout& layout;
  bool isLeft;

  const TFittedElement& at(std::size_t e) const { return layout.elements[isLeft ? e : layout.count() - 1 - e]; }
  // Whether a flat joins the flank; one that does not is a backing.
  bool hasFlat() const { return layout.count() == 4 && layout.profile->junctions[1].kind == TJunctionKind::cross; }
  std::size_t bottom() const {
    const std::size_t fromFlank = hasFlat() ? 2 : 1;
    return isLeft ? fromFlank : layout.count() - 1 - fromFlank;
  }
  const TFittedElement& wallPlate() const { return at(layout.count() - 1); }
  cv::Point2d end(const TFittedElement& e) const { return isLeft ? e.right : e.left; }  // towards the wall
  const TLine& wallLine() const { return isLeft ? wallPlate().lines.left : wallPlate().lines.right; }
  cv::Point2d wallTop() const { return isLeft ? wallPlate().left : wallPlate().right; }
  TFeature onFlank(TFeature left, TFeature right) const { return isLeft ? left : right; }
};

// Of a flat bottom the flank's edge is where the flat begins.
void setBevelRoot(const TBevel& bevel, const TStripeState& state, TProfileFit& fit) {
  TOpening opening =
      wallOpening(bevel.layout, {bevel.bottom(), bevel.isLeft ? bevel.layout.count() - 1 : 0}, state);
  const cv::Point2d wallTop = bevel.wallTop();
  const double topSigma = endSigma(state, bevel.wallLine(), bevel.wallPlate().noise2, wallTop);
  setFeature(fit, bevel.onFlank(TFeature::rightShoulder, TFeature::leftShoulder), wallTop, topSigma);
  if (bevel.hasFlat()) {
    (bevel.isLeft ? opening.left : opening.right).pos = bevel.end(bevel.at(1));
    opening.middle.pos = 0.5 * (opening.left.pos + opening.right.pos);
  }
  setOpening(fit, opening);
}

}  // namespace

bool isDeep(TProfileFit& fit, double noisePx) {
  fit.leastDepthPx = std::max(kLeastDepthPx, kDepthPerNoise * noisePx);
  return fit.measures.depthPx >= fit.leastDepthPx;
}

// Ends of both flanks, evened out. Ends that come close to one another meet.
TOpening openRoot(const TProfileLayout& layout, std::size_t j, const TBase& base, const TStripeState& state) {
  const TFittedElement& leftFlank = layout.elements[j];
  const TFittedElement& rightFlank = layout.elements[j + 1];
  const TLine& left = leftFlank.lines.right;
  const TLine& right = rightFlank.lines.left;
  cv::Point2d leftRoot = leftFlank.right;
  cv::Point2d rightRoot = rightFlank.left;
  double leftSigma = endSigma(state, left, leftFlank.noise2, leftRoot);
  double rightSigma = endSigma(state, right, rightFlank.noise2, rightRoot);
  const double evenPx = state.unseenPx > kHolesPx ? kUnevenPx + 2.0 * state.noisePx : kNoLimit;
  evenOut({left, leftRoot, leftSigma, base.depthOf(layout.elements[0].right, leftRoot)},
          {right, rightRoot, rightSigma, base.depthOf(layout.elements[layout.count() - 1].left, rightRoot)}, base,
          evenPx);
  const std::optional<cv::Point2d> corner = crossingOf(left, right);
  const cv::Point2d between = rightRoot - leftRoot;
  const double gapPx = std::sqrt(between.x * between.x + between.y * between.y);
  const double acrossPx = between.x * base.dx + between.y * base.dy;
  const double closedPx = kClosedPx + kClosedPerNoise * state.noisePx;
  const bool isClosed = acrossPx < closedPx;
  if (isClosed && corner) {
    leftRoot = rightRoot = *corner;
    leftSigma = rightSigma = crossingSigma(state, leftFlank, rightFlank, *corner);
  }
  const double sigma = isClosed ? leftSigma : 0.5 * std::sqrt(leftSigma * leftSigma + rightSigma * rightSigma);
  return {{true, leftRoot, leftSigma},
          {true, rightRoot, rightSigma},
          {true, 0.5 * (leftRoot + rightRoot), sigma},
          isClosed ? 0.0 : gapPx};
}

TOpening wallOpening(const TProfileLayout& layout, TWall wall, const TStripeState& state) {
  const auto [low, high] = wall;
  const bool isLeft = low < high;  // the lower side
  const TFittedElement& bottom = layout.elements[low];
  const TFittedElement& upper = layout.elements[high];
  const TLine bottomLine = surfaceAt(layout, low, isLeft);
  const TLine wallLine = surfaceAt(layout, high, !isLeft);
  const cv::Point2d wallTop = isLeft ? upper.left : upper.right;
  const cv::Point2d end = isLeft ? bottom.right : bottom.left;
  const double seenSigma = endSigma(state, wallLine, upper.noise2, wallTop);
  const double topSigma = std::sqrt(seenSigma * seenSigma + upper.hiddenPx * upper.hiddenPx);
  const double deep = wallLine.offsetOf(end.x, end.y) - wallLine.offsetOf(wallTop.x, wallTop.y);
  cv::Point2d foot(wallTop.x - deep * wallLine.dy, wallTop.y + deep * wallLine.dx);
  cv::Point2d edge = end;
  double sigma = endSigma(state, bottomLine, bottom.noise2, end);
  const double across = (foot.x - end.x) * wallLine.dx + (foot.y - end.y) * wallLine.dy;
  const double gapPx = isLeft ? across : -across;
  const bool isClosed = gapPx < kClosedPx + kClosedPerNoise * state.noisePx;
  const bool leansOver = (foot.x - wallTop.x) * (isLeft ? 1.0 : -1.0) > 0.0;
  const bool isHidden = !isClosed && leansOver && std::abs(end.x - wallTop.x) < kHiddenPx;
  if (isClosed) {  // where the bottom meets the wall
    const TLine upright{wallTop.x, wallTop.y, -wallLine.dy, wallLine.dx, 0.0, 0.0, 0.0};
    edge = foot = crossingOf(bottomLine, upright).value_or(foot);
    sigma = topSigma / std::max(0.2, std::abs(bottomLine.dx));
  }
  if (isHidden) sigma = std::sqrt(sigma * sigma + kHiddenShare * kHiddenShare * gapPx * gapPx);
  // The foot lies as deep as the bottom ends: what the one misses the other does, too.
  const double sine = std::abs(bottomLine.dx * wallLine.dy - bottomLine.dy * wallLine.dx);
  const double deepSigma = sine * sigma;
  const double acrossVariance = topSigma * topSigma + (1.0 - sine * sine) * sigma * sigma;
  const double middleSigma = isClosed ? sigma : std::sqrt(deepSigma * deepSigma + 0.25 * acrossVariance);
  const double footSigma = isClosed ? sigma : std::sqrt(deepSigma * deepSigma + topSigma * topSigma);
  return {{true, isLeft ? edge : foot, isLeft ? sigma : footSigma},
          {true, isLeft ? foot : edge, isLeft ? footSigma : sigma},
          {true, 0.5 * (edge + foot), middleSigma},
          isHidden   ? kNoMeasure
          : isClosed ? 0.0
                     : gapPx};
}

bool measureGroove(const TOrientedCentres& centres, const TProfileLayout& layout, const TStripeState& state,
                   TProfileFit& fit) {
  const TSides s = sidesOf(layout);
  const std::size_t n = layout.count();
  setFeature(fit, TFeature::leftShoulder, s.leftPlate.right, cornerSigma(state, layout, 0));
  setFeature(fit, TFeature::rightShoulder, s.rightPlate.left, cornerSigma(state, layout, n - 2));
  setRoot(centres, layout, s, state, fit);
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
  const TBevel bevel{layout, layout.profile->junctions[0].kind == TJunctionKind::cross};
  setFeature(fit, bevel.onFlank(TFeature::leftShoulder, TFeature::rightShoulder), bevel.end(bevel.at(0)),
             cornerSigma(state, layout, bevel.isLeft ? 0 : n - 2));
  setBevelRoot(bevel, state, fit);
  setShoulderMeasures(centres, {layout.elements[1].span.first, layout.elements[n - 2].span.last}, fit);
  const TLine& left = layout.elements[0].lines.right;
  const TLine& right = layout.elements[n - 1].lines.left;
  const TBase base = baseOf(left, right);
  TJointMeasures& m = fit.measures;
  m.baseAngleDeg = arcTangent2(base.dy, base.dx) * kDegPerRad;
  m.mismatchPx = mismatchAt(left, right, fit.feature(TFeature::root).pos.x);
  const double flankDeg = angleDegOf(bevel.at(1).lines.whole);
  (bevel.isLeft ? m.leftAngleDeg : m.rightAngleDeg) = flankDeg;
  m.includedAngleDeg = 90.0 - std::abs(flankDeg - angleDegOf(bevel.wallLine()));
  return isDeep(fit, state.noisePx);
}

}  // namespace weld
