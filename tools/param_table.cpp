#include "tools/param_table.h"

#include "tools/cli_error.h"
#include "tools/names.h"
#include "tools/text.h"

#include <cmath>

namespace tool {
namespace {

constexpr TParamLimits kShare{0.0, 1.0};
constexpr TParamLimits kSwitch{0.0, 1.0};
constexpr TParamLimits kGreyLevels{0.0, 255.0};
constexpr TParamLimits kTolerancePx{0.0, 1000.0, true};
constexpr TParamLimits kLengthPx{0.0, 100000.0};
constexpr TParamLimits kWidthPx{1.0, 100000.0};
constexpr TParamLimits kCount{0.0, 100000.0};
constexpr TParamLimits kCountFrom1{1.0, 100000.0};
constexpr TParamLimits kSlopeDeg{-90.0, 90.0};
constexpr TParamLimits kIncludedDeg{0.0, 180.0};

const std::vector<TParamSpec>& buttGapParams() {
  static const std::vector<TParamSpec> specs = {
      {"dPara2", &TWeldParams::dPara2, "px", kTolerancePx,
       "stripe points nearer than this to the fitted line take part in the gap search"},
      {"dPara3", &TWeldParams::dPara3, "", kShare,
       "first detection: smallest share of the stripe points on the line"},
      {"dPara4", &TWeldParams::dPara4, "px", kTolerancePx, "tracking: scale of the robust line fit"},
      {"dPara8", &TWeldParams::dPara8, "px", kWidthPx, "smallest gap width (N missing columns measure N + 1)"},
      {"angleRange4.min", TRangeBound{&TWeldParams::angleRange4, &TAngleRange::min}, "deg", kSlopeDeg,
       "first detection: smallest angle of the stripe"},
      {"angleRange4.max", TRangeBound{&TWeldParams::angleRange4, &TAngleRange::max}, "deg", kSlopeDeg,
       "first detection: largest angle of the stripe"},
  };
  return specs;
}

const std::vector<TParamSpec>& lapParams() {
  static const std::vector<TParamSpec> specs = {
      {"dPara1", &TWeldParams::dPara1, "grey", kGreyLevels,
       "brightness drop along a piece that must be exceeded to move its end"},
      {"dPara2", &TWeldParams::dPara2, "px", kTolerancePx, "stripe points nearer than this to a piece support it"},
      {"dPara6", &TWeldParams::dPara6, "px", kLengthPx, "length that both pieces must exceed"},
      {"dPara7", &TWeldParams::dPara7, "px", kLengthPx, "height that the step must exceed"},
  };
  return specs;
}

const std::vector<TParamSpec>& cornerParams() {
  static const std::vector<TParamSpec> specs = {
      {"dPara2", &TWeldParams::dPara2, "px", kTolerancePx,
       "stripe points nearer than this to a flank belong to it"},
      {"dPara3", &TWeldParams::dPara3, "", kShare,
       "smallest share of points on a flank; points per column that the better flank must exceed"},
      {"dPara4", &TWeldParams::dPara4, "px", kTolerancePx, "scale of the robust line fit"},
      {"dPara6", &TWeldParams::dPara6, "points", kLengthPx, "stripe points that the better flank must exceed"},
      {"nPara1", &TWeldParams::nPara1, "columns", kCountFrom1,
       "columns without stripe around the corner must stay below this"},
      {"angleRange1Min", &TWeldParams::angleRange1Min, "deg", kSlopeDeg, "left flank: angle must exceed this"},
      {"angleRange1Max", &TWeldParams::angleRange1Max, "deg", kSlopeDeg, "left flank: angle must stay below this"},
      {"angleRange2Min", &TWeldParams::angleRange2Min, "deg", kSlopeDeg, "right flank: angle must exceed this"},
      {"angleRange2Max", &TWeldParams::angleRange2Max, "deg", kSlopeDeg,
       "right flank: angle must stay below this"},
      {"angleRange5Min", &TWeldParams::angleRange5Min, "deg", kIncludedDeg,
       "angle between the flanks must exceed this"},
      {"angleRange5Max", &TWeldParams::angleRange5Max, "deg", kIncludedDeg,
       "angle between the flanks must stay below this"},
      {"dPara10", &TWeldParams::dPara10, "", kShare,
       "share of each flank next to the corner that must be unbroken"},
      {"nPara5", &TWeldParams::nPara5, "columns", kCount, "longest break accepted there"},
      {"haveGap", &TWeldParams::haveGap, "", kSwitch,
       "true accepts a gap at the corner, false demands stripe on both sides of it"},
  };
  return specs;
}

const std::vector<TParamSpec>& plateParams() {
  static const std::vector<TParamSpec> specs = {
      {"dPara1", &TWeldParams::dPara1, "grey", kGreyLevels,
       "brightness drop along the piece that must be exceeded to move its end"},
      {"dPara2", &TWeldParams::dPara2, "px", kTolerancePx,
       "stripe points nearer than this to the piece support it"},
      {"dPara6", &TWeldParams::dPara6, "px", kLengthPx, "length that the piece must exceed"},
      {"angleRange0Min", &TWeldParams::angleRange0Min, "deg", kSlopeDeg, "angle of the piece must exceed this"},
      {"angleRange0Max", &TWeldParams::angleRange0Max, "deg", kSlopeDeg,
       "angle of the piece must stay below this"},
      {"dPara9", &TWeldParams::dPara9, "px", kLengthPx, "smallest distance between the two ends"},
  };
  return specs;
}

const std::vector<TParamSpec>& stripePresenceParams() {
  static const std::vector<TParamSpec> specs = {
      {"flagPara1", &TWeldParams::flagPara1, "", kSwitch,
       "true extracts the stripe as a ridge instead of edge pairs"},
      {"flagPara2", &TWeldParams::flagPara2, "", kSwitch, "true searches only near the previous stripe"},
  };
  return specs;
}

bool isSwitch(const TParamSpec& spec) {
  return std::holds_alternative<bool TWeldParams::*>(spec.field);
}
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
    throw usageError(expected + value.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
  }
  const double number = isSwitch(spec) ? static_cast<double>(value.get<bool>()) : value.get<double>();
  if (!isInside(number, spec.limits) || (isWhole(spec) && number != std::trunc(number))) {
    throw usageError(expected + plain(number));
  }
  return number;
}

}  // namespace

const std::vector<TParamSpec>& paramsOf(TWeldType type) {
  static const std::vector<TParamSpec> nothing;
  switch (type) {
    case TWeldType::buttGap:
      return buttGapParams();
    case TWeldType::lap:
      return lapParams();
    case TWeldType::corner:
      return cornerParams();
    case TWeldType::plate:
      return plateParams();
    case TWeldType::stripePresence:
      return stripePresenceParams();
    default:
      return nothing;
  }
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
