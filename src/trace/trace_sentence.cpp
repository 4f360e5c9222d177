// Texts of outcomes and failed tests.
#include "trace/trace_conclusion.h"

#include <charconv>
#include <cmath>
#include <iterator>
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

// A setting of the joint is named by its field as well.
std::string parameterText(const TTraceCheck& check, const TWeldJoint* joint) {
  const TWeldParameter* const setting = joint != nullptr ? findWeldParameter(*joint, check.parameter) : nullptr;
  return setting == nullptr ? check.parameter : std::string(setting->name) + " (" + setting->field + ")";
}

std::string sourceText(const TTraceCheck& check, const TWeldJoint* joint) {
  return check.parameter[0] == '\0' ? ", a fixed limit" : ", set by " + parameterText(check, joint);
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

std::string describeCount(const TTraceCheck& check, const TWeldJoint* joint) {
  const TNumbers numbers = numbersOf(check);
  const bool isLower = isLowerLimit(check.kind);
  const std::string amount = check.measured == 0.0 ? "no" : (isLower ? "only " : "") + numbers.measured;
  return amount + " " + countedText(check) + ", " + allowanceText(check.kind) + numbers.limit +
         (isLower ? " needed" : " allowed") + sourceText(check, joint);
}

std::string relationText(const TTraceCheck& check) {
  const bool isEqual = check.measured == check.limit;
  if (isLowerLimit(check.kind)) return isEqual ? " does not exceed the minimum " : " is below the minimum ";
  return isEqual ? " is not below the maximum " : " is above the maximum ";
}

std::string describeQuantity(const TTraceCheck& check, const TWeldJoint* joint) {
  const TNumbers numbers = numbersOf(check);
  const std::string name = check.name;
  const std::string repeatedName = name.find(' ') == std::string::npos ? name + " " : "";
  return name + " " + numbers.measured + unitText(check) + relationText(check) + repeatedName + numbers.limit +
         unitText(check) + sourceText(check, joint);
}

}  // namespace

std::string describeFailure(const TTraceCheck& check, const TWeldJoint* joint) {
  const bool hasLimit = !std::isnan(check.limit);
  if (std::isnan(check.measured) && !hasLimit) return check.reason;
  if (std::isnan(check.measured)) return std::string(check.name) + " is not a number";
  if (!hasLimit) return parameterText(check, joint) + ", the limit of " + check.name + ", is not a number";
  return check.isCount ? describeCount(check, joint) : describeQuantity(check, joint);
}

}  // namespace weld

const char* weldOutcomeText(TWeldOutcome outcome) {
  constexpr const char* kTexts[] = {
      "found",
      "last good seam repeated",
      "no image",
      "no detector for this kind of joint",
      "no stripe",
      "element of the joint missing",
      "element of the joint too short",
      "too little stripe on an element of the joint",
      "angle out of range",
      "size out of range",
      "gap out of range",
      "stripe broken at the joint",
      "seam outside the image",
      "setting out of range",
      "changed too much since the last frame",
      "seam too far from the last one",
      "no line that looks like a seam",
      "line not surely a seam",
      "line too short",
  };
  const auto index = static_cast<std::size_t>(outcome);
  return index < std::size(kTexts) ? kTexts[index] : "unknown outcome";
}
