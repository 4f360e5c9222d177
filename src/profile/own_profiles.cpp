#include "profile/own_profiles.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kAnyPx = 1e9;
constexpr double kSlackDeg = 8.0;
constexpr double kSlackShare = 0.25;  // of lengths, radii and steps

TJointRange clamped(TJointRange range, double least, double most) {
  return {std::clamp(range.min, least, most), std::clamp(range.max, least, most)};
}
TJointRange widenedDeg(TJointRange range, double mostDeg) {
  return clamped({range.min - kSlackDeg, range.max + kSlackDeg}, -mostDeg, mostDeg);
}
TJointRange widenedPx(TJointRange range, double leastPx) {
  return clamped({range.min * (1.0 - kSlackShare), range.max * (1.0 + kSlackShare)}, leastPx, kAnyPx);
}

// What a shape is to the engine.
struct TShapeLimits {
  TElementKind kind;
  TElementRole role;
  double mostDeg;
  double leastPx;
};

TShapeLimits limitsOf(TElementShape shape) {
  switch (shape) {
    case TElementShape::flank:
      return {TElementKind::line, TElementRole::flank, 90.0, kLeastFlankPx};
    case TElementShape::flat:
      return {TElementKind::line, TElementRole::flat, kMostPlateDeg, kLeastFlatPx};
    case TElementShape::arc:
      return {TElementKind::arc, TElementRole::round, 90.0, kLeastArcPx};
    default:
      return {TElementKind::line, TElementRole::plate, kMostPlateDeg, kLeastPlatePx};
  }
}

TElementRange elementOf(const TJointElement& from) {
  const TShapeLimits limits = limitsOf(from.shape);
  const TJointRange angleDeg = widenedDeg(from.angleDeg, limits.mostDeg);
  const TJointRange lengthPx = widenedPx(from.lengthPx, limits.leastPx);
  TElementRange to;
  to.kind = limits.kind;
  to.role = limits.role;
  to.minAngleDeg = angleDeg.min;
  to.maxAngleDeg = angleDeg.max;
  to.minLengthPx = lengthPx.min;
  to.maxLengthPx = lengthPx.max;
  if (to.kind == TElementKind::line) return to;
  const TJointRange radiusPx = widenedPx(from.radiusPx, kLeastRadiusPx);
  to.minRadiusPx = radiusPx.min;
  to.maxRadiusPx = radiusPx.max;
  to.isCentreBelow = !from.isHollow;
  return to;
}

TJunctionRange meetingOf(const TJointElement& right, TJointRange turnDeg) {
  if (right.meeting == TElementMeeting::smooth) {
    const TJointRange smooth = clamped(turnDeg, -kMostSmoothDeg, kMostSmoothDeg);
    return {TJunctionKind::tangent, smooth.min, smooth.max, 0.0, 0};
  }
  const bool isRounded = right.meeting == TElementMeeting::rounded;
  return {isRounded ? TJunctionKind::fillet : TJunctionKind::cross,
          turnDeg.min,
          turnDeg.max,
          0.0,
          0,
          isRounded ? kLeastRoundedDeg : kLeastTurnDeg};
}

TJunctionRange openingOf(const TJointElement& gap, TJointRange turnDeg) {
  const TJointRange& stepPx = gap.stepPx;
  switch (gapKindOf(stepPx)) {
    case TGapKind::root:
      return {TJunctionKind::root, turnDeg.min, turnDeg.max, 0.0, 0, kLeastRootDeg};
    case TGapKind::hole:
      return {TJunctionKind::hole, turnDeg.min, turnDeg.max, 0.0, 0};
    default:
      break;
  }
  const double leastPx = (1.0 - kSlackShare) * std::min(std::abs(stepPx.min), std::abs(stepPx.max));
  return {TJunctionKind::jump, turnDeg.min, turnDeg.max, std::max(kLeastJumpPx, leastPx),
          stepPx.min > 0.0 ? 1 : -1};
}

// Arcs share the tangents of straight neighbours.
void shareTangents(TProfileTemplate& form) {
  const auto isSmooth = [&](std::size_t j) { return form.junctions[j].kind == TJunctionKind::tangent; };
  const auto isLine = [&](std::size_t e) { return form.elements[e].kind == TElementKind::line; };
  for (std::size_t e = 0; e < form.elementCount; ++e) {
    if (isLine(e)) continue;
    form.elements[e].isTouchingLeft = e > 0 && isSmooth(e - 1) && isLine(e - 1);
    form.elements[e].isTouchingRight = e + 1 < form.elementCount && isSmooth(e) && isLine(e + 1);
  }
}

// Of several points with one name the first.
void addPoints(const TJointTemplate& joint, const TFormParts& parts, TProfileTemplate& form) {
  const auto isNamed = [&](TFeature feature) {
    const auto* const begin = form.points.cbegin();
    const auto isSame = [&](const TProfilePoint& p) { return p.feature == feature; };
    return std::any_of(begin, begin + form.pointCount, isSame);
  };
  for (const TJointPoint& point : joint.points) {
    const std::optional<TProfilePoint> placed = placeOf(point, joint, parts);
    if (placed && !isNamed(point.feature)) form.points[form.pointCount++] = *placed;
  }
}

TProfileTemplate formOf(const TJointTemplate& joint, const TFormParts& parts) {
  TProfileTemplate form;
  form.name = "own";
  form.measuring = TMeasuring::points;
  form.tracked = joint.tracked;
  form.elementCount = parts.elements.size();
  for (std::size_t e = 0; e < form.elementCount; ++e) {
    const TJointElement& element = joint.elements[parts.elements[e]];
    form.elements[e] = elementOf(element);
    if (e == 0) continue;
    const TJointRange turnDeg = widenedDeg(element.turnDeg, 180.0);
    const std::size_t gap = parts.gapBefore[e];
    form.junctions[e - 1] = gap == kNoGap ? meetingOf(element, turnDeg) : openingOf(joint.elements[gap], turnDeg);
  }
  shareTangents(form);
  addPoints(joint, parts, form);
  return form;
}

TFormSource sourceOf(const TFormParts& parts) {
  TFormSource source;
  std::copy(parts.elements.begin(), parts.elements.end(), source.elementOf.begin());
  std::copy(parts.gapBefore.begin() + 1, parts.gapBefore.end(), source.gapOf.begin());
  return source;
}

void addMirrorImages(TOwnProfiles& own) {
  const std::size_t count = own.forms.size();
  for (std::size_t f = 0; f < count; ++f) {
    const auto elements = static_cast<std::ptrdiff_t>(own.forms[f].elementCount);
    TFormSource source = own.sources[f];
    source.isMirrored = true;
    std::reverse(source.elementOf.begin(), source.elementOf.begin() + elements);
    std::reverse(source.gapOf.begin(), source.gapOf.begin() + elements - 1);
    own.forms.push_back(mirrored(own.forms[f], own.forms[f].name));
    own.sources.push_back(source);
  }
}

}  // namespace

TOwnProfiles makeProfiles(const TJointTemplate& joint) {
  TOwnProfiles own;
  own.joint = joint;
  for (const TFormParts& parts : formsOf(joint)) {
    own.forms.push_back(formOf(joint, parts));
    own.sources.push_back(sourceOf(parts));
  }
  if (joint.mayBeMirrored) addMirrorImages(own);
  return own;
}

}  // namespace weld
