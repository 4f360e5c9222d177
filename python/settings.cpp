#include "settings.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>
#include <sstream>
#include <vector>

namespace py = pybind11;

namespace python {
namespace {

std::string textOf(double number) {
  std::ostringstream text;
  text << number;
  return text.str();
}

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

bool isIn(double value, const TParameterLimits& limits) {
  return (limits.isMinExcluded ? value > limits.min : value >= limits.min) && value <= limits.max;
}

void setParameter(const TWeldParameter& parameter, const std::string& given, const py::handle& value,
                  TWeldParams& params) {
  double number = 0.0;
  try {
    number = value.cast<double>();
  } catch (const py::cast_error&) {
    throw py::type_error(given + ": " + py::repr(value).cast<std::string>() + " is no number");
  }
  const bool isWhole = parameter.value.kind == TParameterKind::number || std::trunc(number) == number;
  if (!isIn(number, parameter.limits) || !isWhole) {
    throw py::value_error(given + ": " + textOf(number) + " is not from " + textOf(parameter.limits.min) + " to " +
                          textOf(parameter.limits.max) +
                          (*parameter.unit != '\0' ? std::string(" ") + parameter.unit : "") +
                          (isWhole ? "" : ", whole numbers"));
  }
  parameter.value.set(params, number);
}

bool isNamed(const TWeldParameter& parameter, const std::string& name) {
  return snakeCase(parameter.name) == name || parameter.name == name || parameter.field == name;
}

// A pair sets both ends of a range: left_flank_deg=(20, 60).
bool setRange(const TWeldJoint& joint, const std::string& name, const py::handle& value, TWeldParams& params) {
  if (!py::isinstance<py::sequence>(value) || py::len(value) != 2) return false;
  const auto ends = py::reinterpret_borrow<py::sequence>(value);
  int count = 0;
  for (const TWeldParameter& parameter : joint.parameters) {
    for (int end = 0; end < 2; ++end) {
      if (!isNamed(parameter, name + (end == 0 ? "_min" : "_max"))) continue;
      setParameter(parameter, name, py::object(ends[static_cast<std::size_t>(end)]), params);
      ++count;
    }
  }
  return count == 2;
}

bool setByName(const TWeldJoint& joint, const std::string& name, const py::handle& value, TWeldParams& params) {
  for (const TWeldParameter& parameter : joint.parameters) {
    if (!isNamed(parameter, name)) continue;
    setParameter(parameter, name, value, params);
    return true;
  }
  return setRange(joint, name, value, params);
}

TWeldPosType positionOf(const TWeldJoint& joint, const py::object& position) {
  std::vector<std::string> names;
  for (const TWeldPosType known : joint.positions) {
    const bool isNumber = py::isinstance<py::int_>(position);
    if (isNumber ? position.cast<int>() == static_cast<int>(known)
                 : position.cast<std::string>() == weldPosText(known)) {
      return known;
    }
    names.emplace_back(weldPosText(known));
  }
  throw py::value_error("position: " + py::repr(position).cast<std::string>() + " is none of a " +
                        joint.shortName + "; it has " + joined(names));
}

struct TOption {
  const char* name;
  void (*set)(TTrackerOptions& options, const py::handle& value);
};

TStripeExtraction extractionOf(const std::string& name) {
  if (name == "automatic") return TStripeExtraction::automatic;
  if (name == "edge_pairs") return TStripeExtraction::edgePairs;
  if (name == "ridge") return TStripeExtraction::ridge;
  throw py::value_error("extraction: '" + name + "' is none; write automatic, edge_pairs or ridge");
}

const TOption kOptions[] = {
    {"guide_margin_px", [](TTrackerOptions& o, const py::handle& v) { o.guideMarginPx = v.cast<int>(); }},
    {"extraction",
     [](TTrackerOptions& o, const py::handle& v) { o.extraction = extractionOf(v.cast<std::string>()); }},
    {"reject_impossible_points",
     [](TTrackerOptions& o, const py::handle& v) { o.rejectImpossiblePoints = v.cast<bool>(); }},
    {"max_jump_px", [](TTrackerOptions& o, const py::handle& v) { o.maxJumpPx = v.cast<double>(); }},
    {"accept_after_frames", [](TTrackerOptions& o, const py::handle& v) { o.acceptAfterFrames = v.cast<int>(); }},
    {"hold_frames", [](TTrackerOptions& o, const py::handle& v) { o.holdFrames = v.cast<int>(); }},
    {"search_whole_on_loss",
     [](TTrackerOptions& o, const py::handle& v) { o.searchWholeOnLoss = v.cast<bool>(); }},
    {"keep_trace", [](TTrackerOptions& o, const py::handle& v) { o.keepTrace = v.cast<bool>(); }},
};

py::list describeJoints() {
  py::list joints;
  for (const TWeldJoint& joint : weldJoints()) {
    py::list parameters;
    const TWeldParams defaults;
    for (const TWeldParameter& p : joint.parameters) {
      parameters.append(py::dict(py::arg("name") = snakeCase(p.name), py::arg("field") = p.field,
                                 py::arg("unit") = p.unit, py::arg("minimum") = p.limits.min,
                                 py::arg("maximum") = p.limits.max, py::arg("default") = p.value.get(defaults),
                                 py::arg("meaning") = p.meaning));
    }
    py::list positions;
    for (const TWeldPosType position : joint.positions) positions.append(weldPosText(position));
    joints.append(py::dict(py::arg("type") = static_cast<int>(joint.type), py::arg("name") = snakeCase(joint.name),
                           py::arg("short_name") = joint.shortName, py::arg("meaning") = joint.meaning,
                           py::arg("positions") = positions, py::arg("parameters") = parameters));
  }
  return joints;
}

}  // namespace

std::string snakeCase(const std::string& name) {
  std::string snake;
  for (const char c : name) {
    if (c == '.') {
      snake += '_';
    } else if (std::isupper(static_cast<unsigned char>(c)) != 0) {
      snake += snake.empty() || snake.back() == '_' ? "" : "_";
      snake += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    } else {
      snake += c;
    }
  }
  return snake;
}

const TWeldJoint& jointOf(const py::object& given) {
  std::vector<std::string> names;
  for (const TWeldJoint& joint : weldJoints()) {
    if (py::isinstance<py::int_>(given)) {
      if (given.cast<int>() == static_cast<int>(joint.type)) return joint;
    } else {
      const auto name = py::str(given).cast<std::string>();
      if (name == joint.name || name == joint.shortName || name == snakeCase(joint.name)) return joint;
    }
    names.emplace_back(joint.shortName);
  }
  throw py::value_error("joint: " + py::repr(given).cast<std::string>() + " is none; there are " + joined(names));
}

TJointParams takeParams(const py::object& joint, const py::object& position, py::dict& settings) {
  TJointParams made{&jointOf(joint), {}};
  initWeldParameters(made.joint->type, made.params, positionOf(*made.joint, position));
  py::dict rest;
  for (const auto& [key, value] : settings) {
    const auto name = py::str(key).cast<std::string>();
    if (!setByName(*made.joint, name, value, made.params)) rest[key] = value;
  }
  settings = rest;
  return made;
}

TTrackerOptions takeOptions(py::dict& settings) {
  TTrackerOptions options;
  for (const TOption& option : kOptions) {
    if (!settings.contains(option.name)) continue;
    try {
      option.set(options, settings[option.name]);
    } catch (const py::cast_error&) {
      throw py::type_error(std::string(option.name) + ": " + py::repr(settings[option.name]).cast<std::string>() +
                           " is of the wrong type");
    }
    settings.attr("pop")(option.name);
  }
  return options;
}

void requireEmpty(const py::dict& settings, const TWeldJoint& joint) {
  if (settings.empty()) return;
  std::vector<std::string> names;
  for (const TWeldParameter& parameter : joint.parameters) names.push_back(snakeCase(parameter.name));
  for (const TOption& option : kOptions) names.emplace_back(option.name);
  throw py::type_error(py::str(settings.begin()->first).cast<std::string>() + ": no setting of a " +
                       joint.shortName + "; there are " + joined(names));
}

void addSettings(py::module_& module) {
  module.def(
      "joints", describeJoints,
      "The joints that there are, as a list of dictionaries: type, name, short_name, meaning, positions, and "
      "parameters with name, field, unit, minimum, maximum, default and meaning.");
}

}  // namespace python
