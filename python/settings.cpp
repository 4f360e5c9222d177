#include "settings.h"

#include "zelWeldJob.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <functional>
#include <vector>

namespace py = pybind11;

namespace python {
namespace {

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

// As it would be typed.
std::string textOf(const TWeldParameter& parameter, const py::handle& value) {
  const bool isFlag = parameter.value.kind == TParameterKind::flag && !py::isinstance<py::str>(value);
  return isFlag ? (py::bool_(py::reinterpret_borrow<py::object>(value)) ? "true" : "false")
                : py::str(value).cast<std::string>();
}

void setParameter(const TWeldParameter& parameter, const std::string& given, const py::handle& value,
                  TWeldParams& params) {
  const std::string problem = setWeldParameter(params, parameter.name, textOf(parameter, value));
  if (!problem.empty()) throw py::value_error(given + ": " + problem);
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

// All that a job holds beside joint and parameters, with its usual values.
py::dict usualJob() {
  TWeldJob job;
  job.preparation.region = cv::Rect(0, 0, 1, 1);
  return py::module_::import("json").attr("loads")(writeWeldJob(job));
}

// As a job writes it: names of enumerators, null for never, numpy's numbers as plain ones.
py::object jobValue(const py::object& given) {
  if (py::hasattr(given, "name") && py::hasattr(given, "value")) return given.attr("name").attr("lower")();
  const py::object value = py::hasattr(given, "item") ? given.attr("item")() : given;
  return py::isinstance<py::float_>(value) && std::isinf(value.cast<double>()) ? py::none() : value;
}

// A group of settings that is given as a pair, a region or the like.
py::dict byOrder(const std::string& name, const py::object& given, const py::dict& usual) {
  if (py::isinstance<py::dict>(given)) return given.attr("copy")();
  std::vector<std::string> names;
  for (const auto& [key, value] : usual) names.push_back(snakeCase(py::str(key).cast<std::string>()));
  if (!py::isinstance<py::sequence>(given) || py::len(given) != names.size()) {
    throw py::value_error(name + ": must be (" + joined(names) + "), not " + py::repr(given).cast<std::string>());
  }
  py::dict group;
  for (std::size_t i = 0; i < names.size(); ++i) group[py::str(names[i])] = given[py::int_(i)];
  return group;
}

// Takes the settings that the job knows out of those given and puts them under its names.
py::dict takeKnown(py::dict& given, const py::dict& usual) {
  py::dict taken;
  for (const auto& [key, value] : usual) {
    const std::string name = snakeCase(py::str(key).cast<std::string>());
    if (!given.contains(name)) continue;
    const py::object own = given.attr("pop")(name);
    if (!py::isinstance<py::dict>(value)) {
      taken[key] = jobValue(own);
      continue;
    }
    const auto group = py::reinterpret_borrow<py::dict>(value);
    py::dict rest = byOrder(name, own, group);
    taken[key] = takeKnown(rest, group);
    if (!rest.empty()) {
      throw py::type_error(name + ": no setting " + py::repr(rest.begin()->first).cast<std::string>());
    }
  }
  return taken;
}

// The problem of a text that Python never saw begins with the setting, not with its line.
TWeldJob parsed(const py::dict& text) {
  const TJobReading reading = parseWeldJob(py::module_::import("json").attr("dumps")(text).cast<std::string>());
  const std::size_t place = std::min(reading.problem.find("tracker."), reading.problem.find("image."));
  if (!reading.problem.empty()) {
    throw py::value_error(place < reading.problem.size() ? reading.problem.substr(place) : reading.problem);
  }
  return reading.job;
}

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
  initWeldParameters(made.joint->type, made.params, TWeldPosType::centre);
  const std::string problem = setWeldPosition(made.params, py::str(position).cast<std::string>());
  if (!problem.empty()) throw py::value_error("position: " + problem);
  py::dict rest;
  for (const auto& [key, value] : settings) {
    const auto name = py::str(key).cast<std::string>();
    if (!setByName(*made.joint, name, value, made.params)) rest[key] = value;
  }
  settings = rest;
  return made;
}

TWeldJob takeJob(const py::object& joint, const py::object& position, py::dict settings) {
  const TJointParams params = takeParams(joint, position, settings);
  const py::dict usual = usualJob();
  const py::dict text(py::arg("zelWeldJob") = 1, py::arg("joint") = params.joint->name,
                      py::arg("tracker") = takeKnown(settings, usual["tracker"]),
                      py::arg("image") = takeKnown(settings, usual["image"]));
  requireEmpty(settings, *params.joint);
  TWeldJob job = parsed(text);
  job.params = params.params;
  return job;
}

TContrastSearch takeContrast(py::dict settings) {
  py::dict tracker(py::arg("contrast") = settings);
  const py::dict text(py::arg("zelWeldJob") = 1, py::arg("joint") = "gap",
                      py::arg("tracker") = takeKnown(tracker, usualJob()["tracker"]));
  return parsed(text).tracker.contrast;
}

tool::TSweepRange rangeOf(const TWeldJob& job, const std::string& parameter, const std::vector<double>& values) {
  const bool ascends = std::adjacent_find(values.begin(), values.end(), std::greater_equal<>()) == values.end();
  if (values.empty() || !ascends) throw py::value_error("values: must be numbers in ascending order");
  const TWeldJoint* const joint = findWeldJoint(job.params.weldType);
  for (const TWeldParameter& known : joint != nullptr ? joint->parameters : std::vector<TWeldParameter>()) {
    if (isNamed(known, parameter)) return {known.name, values};
  }
  return {parameter, values};
}

void requireEmpty(const py::dict& settings, const TWeldJoint& joint) {
  if (settings.empty()) return;
  std::vector<std::string> names;
  for (const TWeldParameter& parameter : joint.parameters) names.push_back(snakeCase(parameter.name));
  const py::dict usual = usualJob();
  for (const char* const group : {"tracker", "image"}) {
    for (const auto& [name, value] : usual[group].cast<py::dict>())
      names.push_back(snakeCase(py::str(name).cast<std::string>()));
  }
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
