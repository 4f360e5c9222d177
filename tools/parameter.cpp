#include "tools/parameter.h"

#include "tools/cli_error.h"
#include "tools/names.h"
#include "tools/text.h"

#include <cmath>

namespace tool {
namespace {

using nlohmann::ordered_json;

bool isInside(double value, const TParameterLimits& limits) {
  return (limits.isMinExcluded ? value > limits.min : value >= limits.min) && value <= limits.max;
}

// The number or flag as a double, checked against kind and limits.
double checkedValue(const TWeldParameter& parameter, const ordered_json& value) {
  const std::string expected = labelOf(parameter) + " must be " + describeLimits(parameter) + ", not ";
  if (isFlag(parameter) ? !value.is_boolean() : !value.is_number()) {
    throw usageError(expected + describeValue(value));
  }
  const double number = isFlag(parameter) ? static_cast<double>(value.get<bool>()) : value.get<double>();
  const bool isBroken = parameter.value.kind == TParameterKind::count && number != std::trunc(number);
  if (!isInside(number, parameter.limits) || isBroken) {
    throw usageError(expected + plain(number));
  }
  return number;
}

std::string labelsOf(const std::vector<const TWeldParameter*>& parameters) {
  std::vector<std::string> labels;
  for (const TWeldParameter* const parameter : parameters) {
    labels.push_back(labelOf(*parameter));
  }
  return join(labels, ", ");
}

}  // namespace

const std::vector<TWeldParameter>& parametersOf(TWeldType type) {
  static const std::vector<TWeldParameter> nothing;
  const TWeldJoint* const joint = findWeldJoint(type);
  return joint != nullptr ? joint->parameters : nothing;
}

const TWeldParameter& findParameter(TWeldType type, const std::string& name) {
  std::vector<const TWeldParameter*> all;
  std::vector<const TWeldParameter*> similar;
  for (const TWeldParameter& parameter : parametersOf(type)) {
    if (name == parameter.name || name == parameter.field) {
      return parameter;
    }
    all.push_back(&parameter);
    if (isNearMiss(name, parameter.name) || isNearMiss(name, parameter.field)) {
      similar.push_back(&parameter);
    }
  }
  throw usageError(
      nameOf(type) + " reads no parameter '" + name +
      (similar.empty() ? "': it reads " + labelsOf(all) : "': did you mean " + labelsOf(similar) + "?"));
}

std::string labelOf(const TWeldParameter& parameter) {
  return std::string(parameter.name) + " (" + parameter.field + ")";
}

bool isFlag(const TWeldParameter& parameter) {
  return parameter.value.kind == TParameterKind::flag;
}

std::string describeLimits(const TWeldParameter& parameter) {
  if (isFlag(parameter)) {
    return "true or false";
  }
  const TParameterLimits& limits = parameter.limits;
  const bool isCount = parameter.value.kind == TParameterKind::count;
  return (isCount ? "a whole number " : "") + std::string(limits.isMinExcluded ? "above " : "") +
         plain(limits.min) + (limits.isMinExcluded ? ", up to " : " to ") + plain(limits.max);
}

std::string describeValue(const ordered_json& value) {
  using TErrors = ordered_json::error_handler_t;
  return value.is_structured() ? value.type_name() : value.dump(-1, ' ', false, TErrors::replace);
}

ordered_json valueOf(const TWeldParams& params, const TWeldParameter& parameter) {
  const double value = parameter.value.get(params);
  if (isFlag(parameter)) {
    return value != 0.0;
  }
  if (parameter.value.kind == TParameterKind::count) {
    return static_cast<std::int64_t>(value);
  }
  return value;
}

void setValue(TWeldParams& params, const TWeldParameter& parameter, const ordered_json& value) {
  parameter.value.set(params, checkedValue(parameter, value));
}

}  // namespace tool
