// The one table of what each joint reads from TWeldParams: name, meaning, unit, range, and what goes wrong beyond.
#pragma once

#include "zelWeldDetect.h"

#include <nlohmann/json.hpp>

#include <string>
#include <variant>
#include <vector>

namespace tool {

// One bound of an angle range that is a record of its own.
struct TRangeBound {
  TAngleRange TWeldParams::*range;
  double TAngleRange::*bound;
};

using TParamField =
    std::variant<double TWeldParams::*, std::int32_t TWeldParams::*, bool TWeldParams::*, TRangeBound>;

struct TParamLimits {
  double min = 0.0;
  double max = 0.0;
  bool isMinExcluded = false;
};

struct TParamSpec {
  std::string name;  // as in TWeldParams; a bound of angleRange4 is angleRange4.min
  TParamField field;
  std::string unit;  // "" for ratios and switches
  TParamLimits limits;
  std::string meaning;
  std::string tooLow;   // what a value that is too low does; for a switch, what false does
  std::string tooHigh;  // the same for one that is too high, and for true
};

// The parameters that a joint reads, in the order of TWeldParams. Empty for a joint without a detector.
const std::vector<TParamSpec>& paramsOf(TWeldType type);

// The parameter of that name. Throws a usage error when the joint does not read it.
const TParamSpec& findParam(TWeldType type, const std::string& name);

bool isSwitch(const TParamSpec& spec);

// "0 to 1", "above 0, up to 1000", "true or false".
std::string describeLimits(const TParamSpec& spec);

// A value as it stands in JSON, on one line; of a list or an object, which may be nested without end, only the
// kind.
std::string describeValue(const nlohmann::ordered_json& value);

// The value as a JSON number or boolean.
nlohmann::ordered_json getParam(const TWeldParams& params, const TParamSpec& spec);

// Stores a value. Throws a usage error when its kind is wrong or it lies outside the limits.
void setParam(TWeldParams& params, const TParamSpec& spec, const nlohmann::ordered_json& value);

}  // namespace tool
