#include "detectors/groove.h"

#include "detectors/common_checks.h"
#include "detectors/groove_report.h"
#include "profile/profile_engine.h"
#include "zelWeldSettings.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kLeastFlankDeg = 10.0;  // with the flanks' ranges at their defaults
constexpr double kMostFlankDeg = 88.0;

constexpr std::size_t kLeastCentres = TStripeProfile::kFewestCentres;

constexpr TCheck kCentres = countCheck({20, TWeldOutcome::noStripe, "stripe", "too few stripe points in a row"},
                                       "stripe points that follow each other", TRule::atLeast);
constexpr TCheck kLayout{{21, TWeldOutcome::elementMissing, "groove", "no such groove in the stripe"}, "groove"};
constexpr TCheck kMeeting{
    {22, TWeldOutcome::elementMissing, "groove", "flanks and plates do not meet in a groove"},
    "flanks and plates that meet"};
constexpr TCheck kRelief{{23, TWeldOutcome::fitTooWeak, "groove", "groove within the roughness of the stripe"},
                         "depth that stands out of the noise",
                         TRule::atLeast,
                         "px"};
constexpr TCheck kRound{{23, TWeldOutcome::elementMissing, "round edges", "round edges overlap or turn away"},
                        "round edges side by side"};
constexpr TCheck kPlates{{24, TWeldOutcome::angleOutOfRange, "plates", "plates out of line"},
                         "angle between the plates",
                         TRule::atMost,
                         "deg"};
constexpr TCheck kStep{{25, TWeldOutcome::sizeOutOfRange, "plates", "a step rather than a groove"},
                       "mismatch of the plates beside the depth",
                       TRule::notAbove,
                       "px"};
constexpr TCheck kFeet{{26, TWeldOutcome::elementMissing, "root", "a flank ends before its flat root"},
                       "flanks lit up to a flat root"};
constexpr TCheck kSeen{{27, TWeldOutcome::fitTooWeak, "groove", "too little stripe beside a corner of the groove"},
                       "share of stripe beside the worst corner",
                       TRule::atLeast};
constexpr TCheck kBetter{
    {28, TWeldOutcome::fitTooWeak, "groove", "a plate or a curve explains the stripe as well"},
    "gain over a plate or a curve",
    TRule::atLeast};

constexpr TCheck kSmooth{{30, TWeldOutcome::fitTooWeak, "flank", "a flank or an arc is too rough"},
                         "roughness of the roughest flank or arc",
                         TRule::atMost,
                         "px",
                         "lineTolerancePx"};
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

bool isFlare(const TProfileFit& fit) {
  return fit.profile->measuring == TMeasuring::flareV || fit.profile->measuring == TMeasuring::flareBevel;
}

// The arcs of a U groove's corners may be short; its walls are flanks.
bool isSide(const TProfileFit& fit, const TProfileElement& element) {
  return element.role == TElementRole::flank || (element.role == TElementRole::round && isFlare(fit));
}

double lengthOf(const TProfileElement& element) {
  const cv::Point2d d = element.right - element.left;
  return std::sqrt(d.dot(d));
}

// What the engine itself asks of a profile, with its numbers where the joint has them.
bool isLaid(const TProfileFit& fit, const TStripeProfile& stripe, const TTrace& trace) {
  const TProfileOutcome outcome = fit.outcome;
  const TJointMeasures& m = fit.measures;
  const TProfileOptions limits;
  const auto notes = [&](const TCheck& check, double measured, double limit, TProfileOutcome failure) {
    const bool hasNumbers = !std::isnan(measured) && !std::isnan(limit);
    return hasNumbers ? trace.note(check, measured, limit, outcome != failure)
                      : trace.holds(check, outcome != failure);
  };
  return trace.passes(kCentres, static_cast<std::size_t>(stripe.centres().count()), kLeastCentres) &&
         trace.holds(kLayout, outcome != TProfileOutcome::noLayout && outcome != TProfileOutcome::tooFewCentres) &&
         trace.holds(kMeeting, outcome != TProfileOutcome::notMeeting) &&
         notes(isFlare(fit) ? kRound : kRelief, m.depthPx, fit.leastDepthPx, TProfileOutcome::tooShallow) &&
         notes(kPlates, fit.platesApartDeg, kMostPlatesApartDeg, TProfileOutcome::platesApart) &&
         notes(kStep, std::abs(m.mismatchPx), m.depthPx, TProfileOutcome::stepped) &&
         trace.holds(kFeet, outcome != TProfileOutcome::darkFeet) &&
         notes(kSeen, fit.worstShare, kLeastShare, TProfileOutcome::notSeen) &&
         trace.note(kBetter, fit.score, limits.leastGain, fit.isFound());
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
  return trace.ofPiece(roughest).passes(kSmooth, roughestPx, settings.lineTolerancePx) &&
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

cv::Point2d pointAt(const TProfileFit& fit, TWeldPosType pos) {
  const TMeasuredPoint& root = fit.feature(TFeature::root);
  const TMeasuredPoint& left = fit.feature(TFeature::leftShoulder);
  const TMeasuredPoint& right = fit.feature(TFeature::rightShoulder);
  switch (pos) {
    case TWeldPosType::left:
      return left.isFound ? left.pos : root.pos;
    case TWeldPosType::right:
      return right.isFound ? right.pos : root.pos;
    case TWeldPosType::upper:
      return left.isFound && right.isFound ? (left.pos + right.pos) * 0.5 : root.pos;
    default:
      return root.pos;
  }
}

double orZero(double measure) {
  return std::isnan(measure) ? 0.0 : measure;
}

void storeMeasures(const TProfileFit& fit, TSeam& seam) {
  const TJointMeasures& m = fit.measures;
  const bool hasRadii = isFlare(fit);
  seam.auxVal1 = orZero(m.widthPx);
  seam.auxVal2 = orZero(m.depthPx);
  seam.auxVal3 =
      orZero(hasRadii ? (std::isnan(m.leftRadiusPx) ? m.rightRadiusPx : m.leftRadiusPx) : m.includedAngleDeg);
  seam.auxVal4 =
      fit.profile->measuring == TMeasuring::flareBevel ? 0.0 : orZero(hasRadii ? m.rightRadiusPx : m.gapPx);
  seam.trackVal = orZero(m.mismatchPx);
}

// A tracker may have been told to look for another joint since.
bool isOf(TTemplateView forms, const TProfileFit* fit) {
  return fit != nullptr && fit->profile >= forms.begin() && fit->profile < forms.end();
}

TProfileFit lay(const TFrame& frame, const TStripeProfile& stripe, const TPrevious& previous) {
  const TTemplateView forms = profilesOf(frame.params.weldType);
  TProfileOptions options;
  options.frame = &frame;
  if (previous.isFound && isOf(forms, previous.profile)) {
    const TStageTimer timer(frame.trace, "profile followed");
    TProfileFit fit = trackProfile(stripe, *previous.profile, options, frame.memory);
    if (fit.isFound()) return fit;
  }
  const TStageTimer timer(frame.trace, "profile search");
  return fitProfile(stripe, forms, options, frame.memory);
}

}  // namespace

TSeam findGroove(const TFrame& frame, const TStripe& stripe, const TPrevious& previous) {
  const TTrace& trace = frame.trace;
  TSeam seam(TPoints(stripe.points, frame.memory));
  const TStripeProfile profile(stripe.points, stripe.sources, stripe.widthPx, frame.memory);
  const TProfileFit fit = lay(frame, profile, previous);
  reportGroove(fit, trace);
  if (!isLaid(fit, profile, trace)) return seam;
  const auto pos = cv::Point2f(pointAt(fit, frame.params.weldPosType));
  trace.addTestedPoint(pos);
  if (!isGroove(fit, TGrooveSettings::of(frame.params), trace)) return seam;
  seam.isFound = true;
  seam.pos = pos;
  seam.profile = fit;
  storeMeasures(fit, seam);
  return seam;
}

}  // namespace weld
