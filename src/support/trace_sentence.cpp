// Texts of outcomes and failed tests.
#include "support/trace_conclusion.h"

#include <charconv>
#include <cmath>
#include <string>

namespace weld {

namespace {

constexpr int kMaxDecimals = 9;
constexpr double kLongestFixed = 1e9;  // larger numbers are written with an exponent

// Independent of the host's locale; without trailing zeros.
std::string numberText(double value, int decimals) {
  char buffer[64];
  const bool isShort = std::abs(value) < kLongestFixed;
  const auto end = isShort ? std::to_chars(buffer, std::end(buffer), value, std::chars_format::fixed, decimals)
                           : std::to_chars(buffer, std::end(buffer), value, std::chars_format::general, decimals);
  std::string text(buffer, end.ptr);
  if (isShort && text.find('.') != std::string::npos) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
  }
  return text == "-0" ? "0" : text;
}

std::string unitText(const TTraceCheck& check) {
  const std::string unit = check.unit;
  if (unit.empty()) return "";
  return unit == "deg" ? " degrees" : " " + unit;
}

struct TNumbers {
  std::string measured;
  std::string limit;
};

// As many decimals as it takes to tell the two apart.
TNumbers numbersOf(const TTraceCheck& check) {
  TNumbers numbers;
  for (int decimals = check.unit[0] == '\0' ? 2 : 1; decimals <= kMaxDecimals; ++decimals) {
    numbers = {numberText(check.measured, decimals), numberText(check.limit, decimals)};
    if (check.measured == check.limit || numbers.measured != numbers.limit) break;
  }
  return numbers;
}

bool isLowerLimit(const TTraceCheck& check) {
  return check.kind == TLimitKind::atLeast || check.kind == TLimitKind::above;
}

std::string sourceText(const TTraceCheck& check) {
  return check.parameter[0] == '\0' ? ", a fixed limit" : std::string(", set by ") + check.parameter;
}

// "stripe points", of a single one "stripe point".
std::string countedText(const TTraceCheck& check) {
  std::string name = check.name;
  if (check.measured != 1.0) return name;
  const std::size_t endOfPlural = (name + " ").find("s ");
  return endOfPlural == std::string::npos ? name : name.erase(endOfPlural, 1);
}

const char* allowanceText(TLimitKind kind) {
  switch (kind) {
    case TLimitKind::above:
      return "more than ";
    case TLimitKind::atMost:
      return "at most ";
    case TLimitKind::below:
      return "fewer than ";
    default:
      return "at least ";
  }
}

std::string describeCount(const TTraceCheck& check) {
  const TNumbers numbers = numbersOf(check);
  const bool isLower = isLowerLimit(check);
  const std::string amount = check.measured == 0.0 ? "no" : (isLower ? "only " : "") + numbers.measured;
  return amount + " " + countedText(check) + ", " + allowanceText(check.kind) + numbers.limit +
         (isLower ? " needed" : " allowed") + sourceText(check);
}

std::string relationText(const TTraceCheck& check) {
  const bool isEqual = check.measured == check.limit;
  if (isLowerLimit(check)) return isEqual ? " does not exceed the minimum " : " is below the minimum ";
  return isEqual ? " is not below the maximum " : " is above the maximum ";
}

std::string describeQuantity(const TTraceCheck& check) {
  const TNumbers numbers = numbersOf(check);
  const std::string name = check.name;
  const std::string repeatedName = name.find(' ') == std::string::npos ? name + " " : "";
  return name + " " + numbers.measured + unitText(check) + relationText(check) + repeatedName + numbers.limit +
         unitText(check) + sourceText(check);
}

}  // namespace

std::string describeFailure(const TTraceCheck& check) {
  const bool hasLimit = !std::isnan(check.limit);
  if (std::isnan(check.measured) && !hasLimit) return weldOutcomeText(check.failure);
  if (std::isnan(check.measured)) return std::string(check.name) + " is not a number";
  if (!hasLimit) return std::string(check.parameter) + ", the limit of " + check.name + ", is not a number";
  return check.isCount ? describeCount(check) : describeQuantity(check);
}

}  // namespace weld

const char* weldOutcomeText(TWeldOutcome outcome) {
  switch (outcome) {
    case TWeldOutcome::found:
      return "found";
    case TWeldOutcome::held:
      return "last good seam repeated";
    case TWeldOutcome::jumpHeldBack:
      return "seam too far from the last one";
    case TWeldOutcome::markerPoint:
      return "corner without support";
    case TWeldOutcome::pointNotFinite:
      return "seam point is not a number";
    case TWeldOutcome::pointOutside:
      return "seam point outside the image";
    case TWeldOutcome::noImage:
      return "no image";
    case TWeldOutcome::noDetector:
      return "no detector for this kind of joint";
    case TWeldOutcome::noSearchRegion:
      return "no search region: the previous stripe spans too few columns";
    case TWeldOutcome::tooFewCandidates:
      return "too few columns with an edge pair";
    case TWeldOutcome::tooFewWidths:
      return "too few columns of the usual stripe width";
    case TWeldOutcome::tooFewCentres:
      return "too few stripe points";
    case TWeldOutcome::noLine:
      return "no line through the stripe points";
    case TWeldOutcome::lineShareTooLow:
      return "too few stripe points on the line";
    case TWeldOutcome::tooFewPieces:
      return "too few straight pieces";
    case TWeldOutcome::pieceNotFitted:
      return "no line through a piece of the stripe";
    case TWeldOutcome::endNotRefitted:
      return "no line through the points near the end of a piece";
    case TWeldOutcome::endWithoutSupport:
      return "too little stripe near the end of a piece";
    case TWeldOutcome::noGap:
      return "fewer than two stripe points on the line";
    case TWeldOutcome::gapTooNarrow:
      return "gap too narrow";
    case TWeldOutcome::seamOnBorder:
      return "seam in the first row or column of the image or outside";
    case TWeldOutcome::stepTooLow:
      return "step too low";
    case TWeldOutcome::overlapTooLarge:
      return "pieces overlap too far";
    case TWeldOutcome::pieceTooShort:
      return "piece too short";
    case TWeldOutcome::piecesTooShort:
      return "pieces too short together";
    case TWeldOutcome::pieceAngleTooSmall:
      return "angle of the piece too small";
    case TWeldOutcome::pieceAngleTooLarge:
      return "angle of the piece too large";
    case TWeldOutcome::pieceTooLowInImage:
      return "piece too low in the image";
    case TWeldOutcome::plateTooNarrow:
      return "plate too narrow";
    case TWeldOutcome::noLeftFlank:
      return "no left flank in its range of angles";
    case TWeldOutcome::noRightFlank:
      return "no right flank in its range of angles";
    case TWeldOutcome::flankPointsTooFew:
      return "too few stripe points on a flank";
    case TWeldOutcome::cornerOutside:
      return "flanks meet outside the image";
    case TWeldOutcome::leftFlankOnWrongSide:
      return "left flank reaches beyond the corner";
    case TWeldOutcome::rightFlankOnWrongSide:
      return "right flank reaches beyond the corner";
    case TWeldOutcome::flanksTooSparse:
      return "too few stripe points per column on both flanks";
    case TWeldOutcome::flanksTooFewPoints:
      return "too few stripe points on both flanks";
    case TWeldOutcome::leftAngleTooSmall:
      return "left flank angle too small";
    case TWeldOutcome::leftAngleTooLarge:
      return "left flank angle too large";
    case TWeldOutcome::rightAngleTooSmall:
      return "right flank angle too small";
    case TWeldOutcome::rightAngleTooLarge:
      return "right flank angle too large";
    case TWeldOutcome::includedAngleTooSmall:
      return "included angle too small";
    case TWeldOutcome::includedAngleTooLarge:
      return "included angle too large";
    case TWeldOutcome::bandRatioInvalid:
      return "ratio of the unbroken band out of range";
    case TWeldOutcome::bandBroken:
      return "stripe broken near the corner";
    case TWeldOutcome::columnsMissing:
      return "too many stripe columns missing around the corner";
    case TWeldOutcome::leftFlankEndsEarly:
      return "left flank ends too far from the corner";
    case TWeldOutcome::rightFlankEndsEarly:
      return "right flank ends too far from the corner";
    case TWeldOutcome::includedAngleChanged:
      return "included angle changed too much since the last frame";
    case TWeldOutcome::tooFewRidgePoints:
      return "too few ridge points";
    case TWeldOutcome::noStripe:
      return "no stripe";
    case TWeldOutcome::stripeChanged:
      return "a half to two thirds of the stripe points gone since the last frame";
  }
  return "unknown outcome";
}
