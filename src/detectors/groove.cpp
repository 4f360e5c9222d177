#include "detectors/groove.h"

#include "detectors/laid_profile.h"
#include "zelWeldSettings.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kLeastFlankDeg = 10.0;  // with the flanks' ranges at their defaults
constexpr double kMostFlankDeg = 88.0;

constexpr TCheck kLength{{31, TWeldOutcome::elementTooShort, "flank", "a flank or an arc is too short"},
                         "length of the shortest flank or arc",
                         TRule::atLeast,
                         "px",
                         "minElementPx"};
constexpr TCheck kDepth{{32, TWeldOutcome::sizeOutOfRange, "root", "groove too shallow"},
                        "depth",
                        TRule::notBelow,
                        "px",
                        "minDepthPx"};
constexpr TCheck kWidth{{33, TWeldOutcome::sizeOutOfRange, "shoulders", "groove too narrow"},
                        "width",
                        TRule::notBelow,
                        "px",
                        "minWidthPx"};
constexpr TCheck kGap{{34, TWeldOutcome::gapOutOfRange, "root gap", "root gap where none is allowed"},
                      "root gap",
                      TRule::notAbove,
                      "px",
                      "maxClosedGapPx"};

// Flares hide shoulders.
constexpr TCheck kKnown{{41, TWeldOutcome::fitTooWeak, "shoulder", "the shoulder to weld at is hidden"},
                        "standard deviation of the shoulder",
                        TRule::atMost,
                        "px"};

constexpr TCheck kSteady{{42, TWeldOutcome::changedTooMuch, "root", "the root lies elsewhere in every frame"},
                         "distance from where the last frames showed the root",
                         TRule::atMost,
                         "px"};

constexpr double kTornPx = 1.0;  // unseen columns; of a stripe with fewer it is the part that differs

// The two tests of an angle.
struct TAngleCheck {
  TCheck least;
  TCheck most;
};

constexpr TAngleCheck kLeftAngle{{{35, TWeldOutcome::angleOutOfRange, "left flank", "left flank angle too small"},
                                  "left flank angle",
                                  TRule::above,
                                  "deg",
                                  "leftFlankDeg.min"},
                                 {{36, TWeldOutcome::angleOutOfRange, "left flank", "left flank angle too large"},
                                  "left flank angle",
                                  TRule::below,
                                  "deg",
                                  "leftFlankDeg.max"}};
constexpr TAngleCheck kRightAngle{
    {{37, TWeldOutcome::angleOutOfRange, "right flank", "right flank angle too small"},
     "right flank angle",
     TRule::above,
     "deg",
     "rightFlankDeg.min"},
    {{38, TWeldOutcome::angleOutOfRange, "right flank", "right flank angle too large"},
     "right flank angle",
     TRule::below,
     "deg",
     "rightFlankDeg.max"}};
constexpr TAngleCheck kIncluded{{{39, TWeldOutcome::angleOutOfRange, "flanks", "included angle too small"},
                                 "included angle",
                                 TRule::above,
                                 "deg",
                                 "includedAngleDeg.min"},
                                {{40, TWeldOutcome::angleOutOfRange, "flanks", "included angle too large"},
                                 "included angle",
                                 TRule::below,
                                 "deg",
                                 "includedAngleDeg.max"}};
constexpr TCheck kFlat{{35, TWeldOutcome::angleOutOfRange, "flank", "a flank is too flat"},
                       "angle of the flattest flank",
                       TRule::atLeast,
                       "deg"};
constexpr TCheck kSteep{{36, TWeldOutcome::angleOutOfRange, "flank", "a flank is too steep"},
                        "angle of the steepest flank",
                        TRule::atMost,
                        "deg"};

bool isSame(const TAngleRange& a, const TAngleRange& b) {
  return a.min == b.min && a.max == b.max;
}

// The arcs of a U groove's corners may be short; its walls are flanks.
bool isSide(const TProfileFit& fit, const TProfileElement& element) {
  return element.role == TElementRole::flank || (element.role == TElementRole::round && isFlare(fit));
}

bool isInside(const TAngleCheck& check, double deg, const TAngleRange& range, const TTrace& trace) {
  return trace.passes(check.least, deg, std::min(range.min, range.max)) &&
         trace.passes(check.most, deg, std::max(range.min, range.max));
}

// An angle that the joint does not have is not a number, and passes.
bool areAnglesAdmissible(const TProfileFit& fit, const TGrooveSettings& settings, const TTrace& trace) {
  const TJointMeasures& m = fit.measures;
  if (isFlare(fit)) return true;
  const TGrooveSettings usual;
  const bool isAnyFlank =
      isSame(settings.leftFlankDeg, usual.leftFlankDeg) && isSame(settings.rightFlankDeg, usual.rightFlankDeg);
  const bool hasLeft = !std::isnan(m.leftAngleDeg);
  const bool hasRight = !std::isnan(m.rightAngleDeg);
  if (isAnyFlank) {
    const double left = std::abs(hasLeft ? m.leftAngleDeg : m.rightAngleDeg);
    const double right = std::abs(hasRight ? m.rightAngleDeg : m.leftAngleDeg);
    const bool areFlanks = std::isnan(left) || (trace.passes(kFlat, std::min(left, right), kLeastFlankDeg) &&
                                                trace.passes(kSteep, std::max(left, right), kMostFlankDeg));
    if (!areFlanks) return false;
  } else if ((hasLeft && !isInside(kLeftAngle, m.leftAngleDeg, settings.leftFlankDeg, trace)) ||
             (hasRight && !isInside(kRightAngle, m.rightAngleDeg, settings.rightFlankDeg, trace))) {
    return false;
  }
  const bool looksAtIncluded =
      !std::isnan(m.includedAngleDeg) && !isSame(settings.includedAngleDeg, usual.includedAngleDeg);
  return !looksAtIncluded || isInside(kIncluded, m.includedAngleDeg, settings.includedAngleDeg, trace);
}

bool areSidesAdmissible(const TProfileFit& fit, const TGrooveSettings& settings, const TTrace& trace) {
  double roughestPx = 0.0;
  double shortestPx = std::numeric_limits<double>::infinity();
  std::size_t roughest = 0;
  std::size_t shortest = 0;
  for (std::size_t e = 0; e < fit.elementCount; ++e) {
    const TProfileElement& side = fit.elements[e];
    if (!isSide(fit, side)) continue;
    if (side.noisePx > roughestPx) roughest = e;
    if (lengthOf(side) < shortestPx) shortest = e;
    roughestPx = std::max(roughestPx, side.noisePx);
    shortestPx = std::min(shortestPx, lengthOf(side));
  }
  return trace.ofPiece(roughest).passes(kRoughestElement, roughestPx, settings.lineTolerancePx) &&
         trace.ofPiece(shortest).passes(kLength, shortestPx, settings.minElementPx);
}

bool isGroove(const TProfileFit& fit, const TGrooveSettings& settings, const TTrace& trace) {
  const TJointMeasures& m = fit.measures;
  const bool refusesGap = !settings.allowsGap && !std::isnan(m.gapPx);
  return areSidesAdmissible(fit, settings, trace) && trace.passes(kDepth, m.depthPx, settings.minDepthPx) &&
         trace.passes(kWidth, m.widthPx, settings.minWidthPx) &&
         (!refusesGap || trace.passes(kGap, m.gapPx, settings.maxClosedGapPx)) &&
         areAnglesAdmissible(fit, settings, trace);
}

// What is welded at, and the standard deviation of the shoulders that it rests on, px; 0 for the root.
struct TWeldPoint {
  cv::Point2f pos;
  double shoulderSigmaPx = 0.0;
};

TWeldPoint pointAt(const TProfileFit& fit, TWeldPosType pos) {
  const TMeasuredPoint& root = fit.feature(TFeature::root);
  const TMeasuredPoint& left = fit.feature(TFeature::leftShoulder);
  const TMeasuredPoint& right = fit.feature(TFeature::rightShoulder);
  switch (pos) {
    case TWeldPosType::left:
      if (left.isFound) return {cv::Point2f(left.pos), left.sigmaPx};
      break;
    case TWeldPosType::right:
      if (right.isFound) return {cv::Point2f(right.pos), right.sigmaPx};
      break;
    case TWeldPosType::upper:
      if (left.isFound && right.isFound)
        return {cv::Point2f((left.pos + right.pos) * 0.5), std::max(left.sigmaPx, right.sigmaPx)};
      break;
    default:
      break;
  }
  return {cv::Point2f(root.pos), 0.0};
}

}  // namespace

TSeam findGroove(const TFrame& frame, const TStripe& stripe, const TPrevious& previous) {
  const TTemplateView forms = profilesOf(frame.params.weldType);
  std::optional<TProfileFit> fit = layProfile(frame, stripe, forms, previous);
  TSeam seam(TPoints(stripe.points, frame.memory));
  if (previous.shapes != nullptr) seam.shapes = *previous.shapes;
  if (!fit) return seam;
  const double offPx = previous.shapes != nullptr ? keepShape(*fit, seam.shapes) : 0.0;
  const bool isTorn = fit->unseenPx > kTornPx;
  if (isTorn && !frame.trace.passes(kSteady, offPx, kMostPointSigmaPx)) return seam;
  const TWeldPoint point = pointAt(*fit, frame.params.weldPosType);
  frame.trace.addTestedPoint(point.pos);
  if (isGroove(*fit, TGrooveSettings::of(frame.params), frame.trace) &&
      frame.trace.passes(kKnown, point.shoulderSigmaPx, kMostPointSigmaPx))
    takeSeam(*fit, point.pos, seam);
  return seam;
}

}  // namespace weld
