#include "detectors/own_joint.h"

#include "detectors/laid_profile.h"
#include "support/arc_tangent.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr int kFirstStage = 31;  // behind the tests that grooves share

// A text made while compiling, of static life.
struct TText {
  char letters[32] = {};

  constexpr void add(const char* text) {
    std::size_t end = 0;
    while (letters[end] != '\0') ++end;
    for (; *text != '\0'; ++text) letters[end++] = *text;
  }
};

// How a frame ends that fails at a range.
struct TRangeEnd {
  const char* measured;
  TWeldOutcome outcome;
  const char* reason;
  const char* unit;
};
constexpr TRangeEnd kEnds[kOwnRanges] = {
    {"angle of ", TWeldOutcome::angleOutOfRange, "angle of an element out of range", "deg"},
    {"length of ", TWeldOutcome::sizeOutOfRange, "length of an element out of range", "px"},
    {"radius of ", TWeldOutcome::sizeOutOfRange, "radius of an arc out of range", "px"},
    {"turn before ", TWeldOutcome::angleOutOfRange, "turn between two elements out of range", "deg"},
    {"width of ", TWeldOutcome::gapOutOfRange, "width of a gap out of range", "px"},
    {"step at ", TWeldOutcome::sizeOutOfRange, "step at a gap out of range", "px"},
};

// What tests of an element say, in the words of the template.
struct TRangeTexts {
  TText element;  // "elements[2]"
  TText name;     // "angle of elements[2]"
  TText least;    // "elements[2].angleDeg.min"
  TText most;
};

constexpr TRangeTexts textsOf(std::size_t range, std::size_t element) {
  const char number[] = {static_cast<char>('0' + element / 10), static_cast<char>('0' + element % 10), '\0'};
  TRangeTexts texts;
  texts.element.add("elements[");
  texts.element.add(element < 10 ? number + 1 : number);
  texts.element.add("]");
  texts.name.add(kEnds[range].measured);
  texts.name.add(texts.element.letters);
  texts.least = texts.element;
  texts.least.add(".");
  texts.least.add(kRangeRules[range].name);
  texts.most = texts.least;
  texts.least.add(".min");
  texts.most.add(".max");
  return texts;
}

struct TAllTexts {
  TRangeTexts of[kOwnRanges][kMostEntries];
};

constexpr TAllTexts makeTexts() {
  TAllTexts texts{};
  for (std::size_t range = 0; range < kOwnRanges; ++range) {
    for (std::size_t e = 0; e < kMostEntries; ++e) texts.of[range][e] = textsOf(range, e);
  }
  return texts;
}

constexpr TAllTexts kTexts = makeTexts();

double degOf(cv::Point2d direction) {
  return arcTangent2(direction.y, direction.x) * kDegPerRad;
}

double lengthAlong(const TProfileElement& element) {
  const double chordPx = lengthOf(element);
  if (element.kind == TElementKind::line) return chordPx;
  const double r = element.radiusPx;
  const double heightPx = std::sqrt(std::max(0.0, r * r - 0.25 * chordPx * chordPx));
  return 2.0 * r * arcTangent2(0.5 * chordPx, heightPx);
}

// A form that was found, and its measures as the template means them: opening upwards, not mirrored.
class TFoundForm {
public:
  TFoundForm(const TOwnProfiles& o, const TProfileFit& f, const TTrace& t)
      : own(o), fit(f), source(o.sources[static_cast<std::size_t>(f.profile - o.forms.data())]), trace(t) {}

  bool isWithinRanges() const {
    for (std::size_t e = 0; e < fit.elementCount; ++e) {
      const TProfileElement& element = fit.elements[e];
      const std::size_t at = source.elementOf[e];
      const bool isLine = element.kind == TElementKind::line;
      const double side = fit.sense * (source.isMirrored ? -1.0 : 1.0);
      const bool isRight = (!isLine || passes(TOwnRange::angle, at, side * degOf(element.right - element.left))) &&
                           passes(TOwnRange::length, at, lengthAlong(element)) &&
                           (isLine || passes(TOwnRange::radius, at, element.radiusPx));
      if (!isRight || (e > 0 && !isMeetingWithinRanges(e - 1))) return false;
    }
    return true;
  }

  double roughestPx() const {
    double roughest = 0.0;
    for (std::size_t e = 0; e < fit.elementCount; ++e) {
      if (fit.elements[e].role != TElementRole::plate) roughest = std::max(roughest, fit.elements[e].noisePx);
    }
    return roughest;
  }

private:
  // Ranges of the element behind and of the gap.
  bool isMeetingWithinRanges(std::size_t j) const {
    const std::size_t right = source.elementOf[source.isMirrored ? j : j + 1];
    const double turnDeg =
        fit.sense * (tangentDeg(fit.elements[j + 1], false) - tangentDeg(fit.elements[j], true));
    if (!passes(TOwnRange::turn, right, turnDeg)) return false;
    const std::size_t gap = source.gapOf[j];
    if (gap == kNoGap) return true;
    const TGapMeasure& measured = fit.gaps[j];
    return passes(TOwnRange::width, gap, measured.widthPx) &&
           passes(TOwnRange::step, gap, source.isMirrored ? -measured.stepPx : measured.stepPx);
  }

  bool passes(TOwnRange range, std::size_t element, double measured) const {
    const auto r = static_cast<std::size_t>(range);
    const TJointRange& limits = own.joint.elements[element].*kRangeRules[r].range;
    const TRangeTexts& texts = kTexts.of[r][element];
    const TRangeEnd& end = kEnds[r];
    const TFailure failure{kFirstStage + static_cast<int>(r), end.outcome, texts.element.letters, end.reason};
    const TCheck least{failure, texts.name.letters, TRule::notBelow, end.unit, texts.least.letters};
    const TCheck most{failure, texts.name.letters, TRule::notAbove, end.unit, texts.most.letters};
    return (std::isinf(limits.min) || trace.passes(least, measured, limits.min)) &&
           (std::isinf(limits.max) || trace.passes(most, measured, limits.max));
  }

  static double tangentDeg(const TProfileElement& element, bool isRight) {
    if (element.kind == TElementKind::line) return degOf(element.right - element.left);
    const cv::Point2d arm = (isRight ? element.right : element.left) - element.centre;
    return degOf(arm.y < 0.0 ? cv::Point2d(-arm.y, arm.x) : cv::Point2d(arm.y, -arm.x));
  }

  const TOwnProfiles& own;
  const TProfileFit& fit;
  const TFormSource& source;
  const TTrace& trace;
};

}  // namespace

TSeam findOwnJoint(const TOwnProfiles& own, const TFrame& frame, const TStripe& stripe,
                   const TPrevious& previous) {
  TSeam seam(TPoints(stripe.points, frame.memory));
  const std::optional<TProfileFit> fit = layProfile(frame, stripe, own.view(), previous);
  if (!fit) return seam;
  const auto pos = cv::Point2f(fit->feature(fit->profile->tracked).pos);
  frame.trace.addTestedPoint(pos);
  const TFoundForm form(own, *fit, frame.trace);
  const bool isJoint =
      frame.trace.passes(kRoughestElement, form.roughestPx(), own.joint.lineTolerancePx) && form.isWithinRanges();
  if (isJoint) takeSeam(*fit, pos, seam);
  return seam;
}

}  // namespace weld
