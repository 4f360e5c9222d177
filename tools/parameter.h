// One parameter of the library's table of joints, as typed, checked, stored and printed.
#pragma once

#include "zelWeldDetect.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace tool {

// The parameters that a joint reads. Empty for a type without a row in the table.
const std::vector<TWeldParameter>& parametersOf(TWeldType type);

// The parameter of that name or field. Throws a usage error when the joint does not read it, with those that are
// spelled much the same, else with all that it reads.
const TWeldParameter& findParameter(TWeldType type, const std::string& name);

// "minGapPx (dPara8)".
std::string labelOf(const TWeldParameter& parameter);

bool isFlag(const TWeldParameter& parameter);

// "0 to 1", "above 0, up to 1000", "true or false".
std::string describeLimits(const TWeldParameter& parameter);

// A value as it stands in JSON, on one line; of a list or an object, which may be nested without end, only the
// kind.
std::string describeValue(const nlohmann::ordered_json& value);

// The value as a JSON number or boolean.
nlohmann::ordered_json valueOf(const TWeldParams& params, const TWeldParameter& parameter);

// Stores a value. Throws a usage error when its kind is wrong or it lies outside the limits.
void setValue(TWeldParams& params, const TWeldParameter& parameter, const nlohmann::ordered_json& value);

}  // namespace tool
