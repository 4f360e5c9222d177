// Joints, positions and parameters by the names that people type.
#include "job/near_miss.h"
#include "zelWeldDetect.h"

#include <charconv>
#include <cmath>
#include <iterator>

namespace weld {

namespace {

// Independent of the host's locale; without trailing zeros.
std::string numberText(double value) {
  constexpr int kDigits = 6;
  char buffer[64];
  const auto end = std::to_chars(buffer, std::end(buffer), value, std::chars_format::general, kDigits);
  return {buffer, end.ptr};
}

bool parseNumber(const std::string& text, double& value) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end;
}

// The value as a number; false when it is another kind of value than the parameter takes.
bool parseValue(const TWeldParameter& parameter, const std::string& text, double& number) {
  if (parameter.value.kind != TParameterKind::flag) return parseNumber(text, number);
  number = text == "true" ? 1.0 : 0.0;
  return text == "true" || text == "false";
}

bool isInside(double value, const TParameterLimits& limits) {
  return (limits.isMinExcluded ? value > limits.min : value >= limits.min) && value <= limits.max;
}

std::string describeUnknown(const TWeldJoint& joint, const std::string& name) {
  std::vector<std::string> all;
  std::vector<std::string> similar;
  for (const TWeldParameter& parameter : joint.parameters) {
    all.push_back(weldParameterLabel(parameter));
    if (isNearMiss(name, parameter.name) || isNearMiss(name, parameter.field)) similar.push_back(all.back());
  }
  return std::string(joint.name) + " reads no parameter '" + name +
         (similar.empty() ? "': it reads " + listOf(all) : "': did you mean " + listOf(similar) + "?");
}

// A value as it is typed; a number in its shortest form.
std::string describeValue(const std::string& text) {
  double number = 0.0;
  return parseNumber(text, number) ? numberText(number) : text;
}

}  // namespace

}  // namespace weld

using namespace weld;

const TWeldJoint* findWeldJoint(const std::string& name) {
  const std::string wanted = bareName(name);
  for (const TWeldJoint& joint : weldJoints()) {
    if (wanted == bareName(joint.name) || wanted == bareName(joint.shortName) ||
        wanted == std::to_string(static_cast<int>(joint.type)))
      return &joint;
  }
  return nullptr;
}

std::string setWeldPosition(TWeldParams& params, const std::string& name) {
  const TWeldJoint* const joint = findWeldJoint(params.weldType);
  if (joint == nullptr) return "a joint without a detector has no position";
  const std::string wanted = bareName(name);
  std::vector<std::string> known;
  for (const TWeldPosType pos : joint->positions) {
    known.emplace_back(weldPosText(pos));
    if (wanted == known.back() || wanted == std::to_string(static_cast<int>(pos))) {
      params.weldPosType = pos;
      return "";
    }
  }
  return std::string(joint->name) + " knows no position '" + name + "': use " + listOf(known);
}

std::string setWeldParameter(TWeldParams& params, const std::string& name, const std::string& value) {
  const TWeldJoint* const joint = findWeldJoint(params.weldType);
  if (joint == nullptr) return "a joint without a detector reads no parameter '" + name + "'";
  const TWeldParameter* const parameter = findWeldParameter(*joint, name);
  if (parameter == nullptr) return describeUnknown(*joint, name);
  double number = 0.0;
  const bool isRightKind = parseValue(*parameter, value, number);
  const bool isBroken = parameter->value.kind == TParameterKind::count && number != std::trunc(number);
  if (!isRightKind || isBroken || !isInside(number, parameter->limits)) {
    return weldParameterLabel(*parameter) + " must be " + weldParameterRange(*parameter) + ", not " +
           describeValue(value);
  }
  parameter->value.set(params, number);
  return "";
}

std::string weldParameterLabel(const TWeldParameter& parameter) {
  return std::string(parameter.name) + " (" + parameter.field + ")";
}

std::string weldParameterRange(const TWeldParameter& parameter) {
  if (parameter.value.kind == TParameterKind::flag) return "true or false";
  const TParameterLimits& limits = parameter.limits;
  const std::string kind = parameter.value.kind == TParameterKind::count ? "a whole number " : "";
  return kind + (limits.isMinExcluded ? "above " : "") + numberText(limits.min) +
         (limits.isMinExcluded ? ", up to " : " to ") + numberText(limits.max);
}
