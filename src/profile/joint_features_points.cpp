// Joints whose template names the points itself.
#include "profile/joint_features.h"

#include "support/arc_tangent.h"

#include <cmath>
#include <optional>

namespace weld {

namespace {

bool showsNoStripe(TJunctionKind kind) {
  return kind == TJunctionKind::root || kind == TJunctionKind::jump || kind == TJunctionKind::hole;
}

bool isPlate(const TProfileLayout& layout, std::size_t e) {
  return layout.range(e).role == TElementRole::plate;
}

TMeasuredPoint between(const TMeasuredPoint& a, const TMeasuredPoint& b) {
  return {true, 0.5 * (a.pos + b.pos), 0.5 * std::sqrt(a.sigmaPx * a.sigmaPx + b.sigmaPx * b.sigmaPx)};
}

class TPointReader {
public:
  TPointReader(const TProfileLayout& l, const TStripeState& s) : layout(l), state(s), last(l.count() - 1) {
    const bool hasLeft = isPlate(layout, 0);
    const bool hasRight = isPlate(layout, last);
    const TLine& left = layout.elements[hasLeft ? 0 : last].lines.right;
    const TLine& right = layout.elements[hasRight ? last : 0].lines.left;
    if (hasLeft || hasRight) base = baseOf(left, right);
  }

  TBase base;  // along the plates; level without any

  TMeasuredPoint at(const TProfilePoint& point) const {
    if (point.isOfJunction) return atJunction(point.place, point.at);
    if (point.place == TJointPlace::start) return endOf(point.at, false);
    if (point.place == TJointPlace::end) return endOf(point.at, true);
    if (point.place == TJointPlace::middle) return between(endOf(point.at, false), endOf(point.at, true));
    return deepest(layout.elements[point.at].arc.circle,
                   [&](cv::Point2d p) { return arcSigma(state, layout, point.at, p); });
  }

  TOpening openingAt(std::size_t j) const {
    const TJunctionRange& junction = layout.profile->junctions[j];
    if (junction.kind == TJunctionKind::root) return openRoot(layout, j, base, state);
    if (junction.kind == TJunctionKind::jump)
      return wallOpening(layout, junction.step < 0 ? TWall{j, j + 1} : TWall{j + 1, j}, state);
    const TMeasuredPoint left = endOf(j, true);
    const TMeasuredPoint right = endOf(j + 1, false);
    const cv::Point2d across = right.pos - left.pos;
    return {left, right, between(left, right), across.x * base.dx + across.y * base.dy};
  }

private:
  TMeasuredPoint atJunction(TJointPlace place, std::size_t j) const {
    if (place == TJointPlace::deepest) {
      const TCircleFit& rounding = layout.fillets[j];
      const auto sigmaAt = [&](cv::Point2d) { return cornerSigma(state, layout, j); };
      return rounding.isFound ? deepest(rounding.circle, sigmaAt) : endOf(j, true);
    }
    const TOpening opening = openingAt(j);
    return place == TJointPlace::start ? opening.left : place == TJointPlace::end ? opening.right : opening.middle;
  }

  // A corner with a neighbour, or the last stripe seen.
  TMeasuredPoint endOf(std::size_t e, bool isRight) const {
    const TFittedElement& element = layout.elements[e];
    const cv::Point2d pos = isRight ? element.right : element.left;
    const bool isOuter = e == (isRight ? last : 0);
    const std::size_t j = isRight ? e : e - 1;
    const bool isCorner = !isOuter && !showsNoStripe(layout.profile->junctions[j].kind);
    return {true, pos,
            isCorner ? cornerSigma(state, layout, j)
                     : endSigma(state, surfaceAt(layout, e, isRight), element.noise2, pos)};
  }

  template <typename TSigma>
  TMeasuredPoint deepest(const TCircle& c, const TSigma& sigmaAt) const {
    const cv::Point2d pos(c.x - c.r * base.dy, c.y + c.r * base.dx);
    return {true, pos, sigmaAt(pos)};
  }

  const TProfileLayout& layout;
  const TStripeState& state;
  std::size_t last;
};

// Of the outermost flank on either side of the seam.
void setAngles(const TProfileLayout& layout, double seamX, TJointMeasures& m) {
  for (std::size_t e = 0; e < layout.count(); ++e) {
    if (layout.range(e).role != TElementRole::flank) continue;
    const TFittedElement& flank = layout.elements[e];
    const bool isLeft = 0.5 * (flank.left.x + flank.right.x) < seamX;
    if (isLeft && !std::isnan(m.leftAngleDeg)) continue;
    (isLeft ? m.leftAngleDeg : m.rightAngleDeg) = angleDegOf(flank.lines.whole);
  }
  m.includedAngleDeg = 180.0 - (m.leftAngleDeg - m.rightAngleDeg);
}

// Of the first and of the last arc or rounded corner.
void setRadii(const TProfileLayout& layout, TJointMeasures& m) {
  const auto take = [&](double radiusPx) {
    if (std::isnan(m.leftRadiusPx)) m.leftRadiusPx = radiusPx;
    m.rightRadiusPx = radiusPx;
  };
  for (std::size_t e = 0; e < layout.count(); ++e) {
    if (layout.range(e).kind == TElementKind::arc) take(layout.elements[e].arc.circle.r);
    if (e + 1 < layout.count() && layout.fillets[e].isFound) take(layout.fillets[e].circle.r);
  }
}

void setPlateMeasures(const TProfileLayout& layout, const TBase& base, TProfileFit& fit) {
  const std::size_t last = layout.count() - 1;
  const TMeasuredPoint& root = fit.feature(TFeature::root);
  const bool hasLeft = isPlate(layout, 0);
  const bool hasRight = isPlate(layout, last);
  if (hasLeft || hasRight) fit.measures.baseAngleDeg = arcTangent2(base.dy, base.dx) * kDegPerRad;
  if (hasLeft && hasRight && root.isFound) {
    fit.measures.mismatchPx =
        mismatchAt(layout.elements[0].lines.right, layout.elements[last].lines.left, root.pos.x);
  }
}

}  // namespace

bool measurePoints(const TOrientedCentres& centres, const TProfileLayout& layout, const TStripeState& state,
                   TProfileFit& fit) {
  const TPointReader reader(layout, state);
  const TProfileTemplate& profile = *layout.profile;
  for (std::size_t p = 0; p < profile.pointCount; ++p) {
    const TMeasuredPoint point = reader.at(profile.points[p]);
    setFeature(fit, profile.points[p].feature, point.pos, point.sigmaPx);
  }
  for (std::size_t j = 0; j + 1 < layout.count(); ++j) {
    if (!showsNoStripe(profile.junctions[j].kind)) continue;
    const double stepPx = reader.base.depthOf(layout.elements[j].right, layout.elements[j + 1].left);
    fit.gaps[j] = {reader.openingAt(j).gapPx, stepPx};
    if (std::isnan(fit.measures.gapPx)) fit.measures.gapPx = fit.gaps[j].widthPx;
  }
  setAngles(layout, fit.feature(profile.tracked).pos.x, fit.measures);
  setRadii(layout, fit.measures);
  setPlateMeasures(layout, reader.base, fit);
  const auto has = [&](TFeature feature) { return fit.feature(feature).isFound; };
  const bool isGroove = has(TFeature::leftShoulder) && has(TFeature::rightShoulder) && has(TFeature::root);
  if (!isGroove) return true;
  setShoulderMeasures(centres, {0, centres.count()}, fit);
  return isDeep(fit, state.noisePx);
}

}  // namespace weld
