// One parameter of the library's table of joints, as typed, checked, stored and printed.
#pragma once

#include "zelWeldDetect.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace tool {

// The parameters that a joint reads. Empty for a type without a row in the table.
const std::vector<TWeldParameter>& parametersOf(TWeldType type);

// The parameter of that name or field. Throws a usage error when the joint does not read it, with those that are
// spelled much the same, else with all that it reads.
const TWeldParameter& findParameter(TWeldType type, const std::string& name);

bool isFlag(const TWeldParameter& parameter);

// The value as a JSON number or boolean.
nlohmann::ordered_json valueOf(const TWeldParams& params, const TWeldParameter& parameter);

// Stores a value. Throws a usage error when its kind is wrong or it lies outside the limits.
void setValue(TWeldParams& params, const TWeldParameter& parameter, const nlohmann::ordered_json& value);

}  // namespace tool
