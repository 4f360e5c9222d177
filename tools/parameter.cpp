#include "tools/parameter.h"

#include "tools/cli_error.h"

#include <nlohmann/json.hpp>

namespace tool {

using nlohmann::ordered_json;

const std::vector<TWeldParameter>& parametersOf(TWeldType type) {
  static const std::vector<TWeldParameter> nothing;
  const TWeldJoint* const joint = findWeldJoint(type);
  return joint != nullptr ? joint->parameters : nothing;
}

const TWeldParameter& findParameter(TWeldType type, const std::string& name) {
  const TWeldJoint* const joint = findWeldJoint(type);
  const TWeldParameter* const parameter = joint != nullptr ? findWeldParameter(*joint, name) : nullptr;
  if (parameter == nullptr) {
    TWeldParams params;
    params.weldType = type;
    throw usageError(setWeldParameter(params, name, ""));
  }
  return *parameter;
}

bool isFlag(const TWeldParameter& parameter) {
  return parameter.value.kind == TParameterKind::flag;
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
  const std::string problem = setWeldParameter(params, parameter.name, value.dump());
  if (!problem.empty()) {
    throw usageError(problem);
  }
}

}  // namespace tool
