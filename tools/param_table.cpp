#include "tools/param_table.h"

#include "tools/cli_error.h"
#include "tools/names.h"
#include "tools/text.h"

#include <cmath>

namespace tool {
namespace {

bool isWhole(const TParamSpec& spec) {
  return std::holds_alternative<std::int32_t TWeldParams::*>(spec.field);
}

bool isInside(double value, const TParamLimits& limits) {
  return (limits.isMinExcluded ? value > limits.min : value >= limits.min) && value <= limits.max;
}

// The number or switch as a double, checked against kind and limits.
double checkedValue(const TParamSpec& spec, const nlohmann::ordered_json& value) {
  const std::string expected = spec.name + " must be " + describeLimits(spec) + ", not ";
  if (isSwitch(spec) ? !value.is_boolean() : !value.is_number()) {
    throw usageError(expected + describeValue(value));
  }
  const double number = isSwitch(spec) ? static_cast<double>(value.get<bool>()) : value.get<double>();
  if (!isInside(number, spec.limits) || (isWhole(spec) && number != std::trunc(number))) {
    throw usageError(expected + plain(number));
  }
  return number;
}

}  // namespace

bool isSwitch(const TParamSpec& spec) {
  return std::holds_alternative<bool TWeldParams::*>(spec.field);
}

const TParamSpec& findParam(TWeldType type, const std::string& name) {
  std::vector<std::string> names;
  for (const TParamSpec& spec : paramsOf(type)) {
    if (spec.name == name) {
      return spec;
    }
    names.push_back(spec.name);
  }
  throw usageError(nameOf(type) + " reads no parameter '" + name + "': it reads " + join(names, ", "));
}

std::string describeLimits(const TParamSpec& spec) {
  if (isSwitch(spec)) {
    return "true or false";
  }
  return (isWhole(spec) ? "a whole number " : "") + std::string(spec.limits.isMinExcluded ? "above " : "") +
         plain(spec.limits.min) + (spec.limits.isMinExcluded ? ", up to " : " to ") + plain(spec.limits.max);
}

std::string describeValue(const nlohmann::ordered_json& value) {
  using TErrors = nlohmann::ordered_json::error_handler_t;
  return value.is_structured() ? value.type_name() : value.dump(-1, ' ', false, TErrors::replace);
}

nlohmann::ordered_json getParam(const TWeldParams& params, const TParamSpec& spec) {
  if (const auto* const bound = std::get_if<TRangeBound>(&spec.field)) {
    return params.*(bound->range).*(bound->bound);
  }
  if (const auto* const number = std::get_if<double TWeldParams::*>(&spec.field)) {
    return params.**number;
  }
  if (const auto* const whole = std::get_if<std::int32_t TWeldParams::*>(&spec.field)) {
    return params.**whole;
  }
  return params.*std::get<bool TWeldParams::*>(spec.field);
}

void setParam(TWeldParams& params, const TParamSpec& spec, const nlohmann::ordered_json& value) {
  const double number = checkedValue(spec, value);
  if (const auto* const bound = std::get_if<TRangeBound>(&spec.field)) {
    params.*(bound->range).*(bound->bound) = number;
  } else if (const auto* const real = std::get_if<double TWeldParams::*>(&spec.field)) {
    params.** real = number;
  } else if (const auto* const whole = std::get_if<std::int32_t TWeldParams::*>(&spec.field)) {
    params.** whole = static_cast<std::int32_t>(number);
  } else {
    params.*std::get<bool TWeldParams::*>(spec.field) = number != 0.0;
  }
}

}  // namespace tool
