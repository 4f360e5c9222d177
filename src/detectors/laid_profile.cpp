#include "detectors/laid_profile.h"

#include "detectors/groove_report.h"
#include "detectors/known_shape.h"

#include <cmath>

namespace weld {

namespace {

constexpr std::size_t kLeastCentres = TStripeProfile::kFewestCentres;
constexpr double kSureFrom = 0.5;  // confidence; below it about half of the joints lie elsewhere

constexpr TCheck kCentres = countCheck({20, TWeldOutcome::noStripe, "stripe", "too few stripe points in a row"},
                                       "stripe points that follow each other", TRule::atLeast);
constexpr TCheck kLayout{{21, TWeldOutcome::elementMissing, "joint", "no such joint in the stripe"}, "joint"};
constexpr TCheck kMeeting{{22, TWeldOutcome::elementMissing, "joint", "the elements do not meet in a joint"},
                          "elements that meet"};
constexpr TCheck kRelief{{23, TWeldOutcome::fitTooWeak, "joint", "joint within the roughness of the stripe"},
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
constexpr TCheck kSeen{{27, TWeldOutcome::fitTooWeak, "joint", "too little stripe beside a corner of the joint"},
                       "share of stripe beside the worst corner",
                       TRule::atLeast};
constexpr TCheck kBetter{{28, TWeldOutcome::fitTooWeak, "joint", "a plate or a curve explains the stripe as well"},
                         "gain over a plate or a curve",
                         TRule::atLeast};

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

double orZero(double measure) {
  return std::isnan(measure) ? 0.0 : measure;
}

// A tracker may have been told to look for another joint since.
bool isOf(TTemplateView forms, const TProfileFit* fit) {
  return fit != nullptr && fit->profile >= forms.begin() && fit->profile < forms.end();
}

TProfileFit lay(const TFrame& frame, const TStripeProfile& stripe, TTemplateView forms, const TPrevious& previous,
                TView<TFlare> flares) {
  TProfileOptions options;
  options.frame = &frame;
  options.flares = flares;
  const bool isSettled = previous.shapes == nullptr || isUsual(*previous.shapes);
  if (previous.isFound && isOf(forms, previous.profile) && isSettled) {
    const TStageTimer timer(frame.trace, "profile followed");
    TProfileFit fit = trackProfile(stripe, *previous.profile, options, frame.memory);
    if (fit.isFound()) return fit;
  }
  const TStageTimer timer(frame.trace, "profile search");
  return fitProfile(stripe, forms, options, frame.memory);
}

}  // namespace

bool isFlare(const TProfileFit& fit) {
  return fit.profile->measuring == TMeasuring::flareV || fit.profile->measuring == TMeasuring::flareBevel;
}

double lengthOf(const TProfileElement& element) {
  const cv::Point2d d = element.right - element.left;
  return std::sqrt(d.dot(d));
}

std::optional<TProfileFit> layProfile(const TFrame& frame, const TStripe& stripe, TTemplateView forms,
                                      const TPrevious& previous) {
  const TList<TFlare> flares = findFlares(frame, stripe.points);
  const std::optional<TStripe> rest = withoutFlares(frame, stripe, flares);
  const TStripe& seen = rest ? *rest : stripe;
  const TStripeProfile profile(seen.points, seen.sources, seen.widthPx, frame.memory);
  const TProfileFit fit = lay(frame, profile, forms, previous, flares);
  reportGroove(fit, frame.trace);
  if (!isLaid(fit, profile, frame.trace)) return std::nullopt;
  return fit;
}

void takeSeam(const TProfileFit& fit, cv::Point2f pos, TSeam& seam) {
  const TJointMeasures& m = fit.measures;
  const bool hasRadii = isFlare(fit);
  seam.isFound = true;
  seam.isUnsure = fit.confidence < kSureFrom;
  seam.pos = pos;
  seam.profile = fit;
  seam.auxVal1 = orZero(m.widthPx);
  seam.auxVal2 = orZero(m.depthPx);
  seam.auxVal3 =
      orZero(hasRadii ? (std::isnan(m.leftRadiusPx) ? m.rightRadiusPx : m.leftRadiusPx) : m.includedAngleDeg);
  seam.auxVal4 =
      fit.profile->measuring == TMeasuring::flareBevel ? 0.0 : orZero(hasRadii ? m.rightRadiusPx : m.gapPx);
  seam.trackVal = orZero(m.mismatchPx);
}

}  // namespace weld
