// The Python module, and its plain calls.
#include "frame.h"
#include "job.h"
#include "light.h"
#include "results.h"
#include "runs.h"
#include "search.h"
#include "settings.h"

#include "scenes/joints.h"
#include "scenes/scene.h"
#include "tools/cli_error.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <memory>

namespace py = pybind11;
using py::literals::operator""_a;

namespace python {
namespace {

TJointParams makeParams(const py::object& joint, const py::object& position, py::dict settings) {
  TJointParams params = takeParams(joint, position, settings);
  requireEmpty(settings, *params.joint);
  return params;
}

std::shared_ptr<TWeldLineRes> detect(const py::object& frame, const TJointParams& params,
                                     const std::shared_ptr<TWeldLineRes>& previous) {
  const cv::Mat image = pixelsOf(frame);
  const py::gil_scoped_release release;
  TWeldParams own = params.params;
  return std::make_shared<TWeldLineRes>(
      detectWeldLineViaTracking(image, own, previous ? *previous : TWeldLineRes()));
}

py::list recognise(const py::object& frame) {
  const cv::Mat image = pixelsOf(frame);
  std::vector<TJointCandidate> candidates;
  {
    const py::gil_scoped_release release;
    candidates = recogniseJoint(image);
  }
  const py::object weldType = py::module_::import("zelweld._enums").attr("WeldType");
  py::list ranking;
  for (const TJointCandidate& candidate : candidates) {
    ranking.append(py::make_tuple(weldType(static_cast<int>(candidate.weldType)), candidate.score));
  }
  return ranking;
}

TJointMeasurement measure(const TWeldLineRes& line, const TJointParams& params) {
  const py::gil_scoped_release release;
  return measureJoint(line, params.params);
}

scenes::TLevel levelOf(const std::string& name) {
  const std::pair<const char*, scenes::TLevel> levels[] = {{"clean", scenes::TLevel::clean},
                                                           {"noisy", scenes::TLevel::noisy},
                                                           {"harsh", scenes::TLevel::harsh},
                                                           {"real", scenes::TLevel::real}};
  for (const auto& [known, level] : levels) {
    if (name == known) return level;
  }
  throw py::value_error("level: '" + name + "' is none; write clean, noisy, harsh or real");
}

// One drawn frame: its pixels and its seam point, None without one.
py::tuple drawFrame(const py::object& joint, const std::string& level, std::uint64_t seed, int n) {
  const scenes::TJoint drawn = scenes::jointOf(jointOf(joint).type);
  const scenes::TLevel difficulty = levelOf(level);
  scenes::TScene scene;
  {
    const py::gil_scoped_release release;
    scene = scenes::renderScene(scenes::frameOf(scenes::randomScene(drawn, difficulty, seed), {}, n));
  }
  const py::array pixels = pixelsTo(scene.image);
  if (!scene.truth.hasSeam) return py::make_tuple(pixels, py::none());
  const cv::Point2d seam = scenes::seamPoint(drawn, scene.truth, TWeldPosType::centre);
  return py::make_tuple(pixels, py::make_tuple(seam.x, seam.y));
}

void addCalls(py::module_& module) {
  py::class_<TJointParams>(module, "Params", "A joint and its settings.")
      .def(py::init([](const py::object& joint, const py::object& position, const py::kwargs& settings) {
             return makeParams(joint, position, settings);
           }),
           "joint"_a, "position"_a = "centre")
      .def_property_readonly("joint", [](const TJointParams& p) { return snakeCase(p.joint->name); })
      .def(
          "as_dict",
          [](const TJointParams& p) {
            py::dict values;
            for (const TWeldParameter& parameter : p.joint->parameters) {
              values[py::str(snakeCase(parameter.name))] = parameter.value.get(p.params);
            }
            return values;
          },
          "Every setting of the joint by its name.");
  module.def("detect", detect, "frame"_a, "params"_a, "previous"_a = nullptr,
             "The plain call, one frame at a time.");
  module.def("measure", measure, "line"_a, "params"_a, "Measures the joint that a result shows.");
  module.def("recognise", recognise, "frame"_a,
             "What joint a frame may show: (WeldType, score) each, the best first; empty without a joint.");
  module.def("draw_frame", drawFrame, "joint"_a, "level"_a = "clean", "seed"_a = 1, "n"_a = 0,
             "Frame n of a drawn sequence and its true seam point (x, y).");
}

}  // namespace
}  // namespace python

PYBIND11_MODULE(_core, module) {
  module.doc() = "Finds weld seams in images of a laser stripe.";
  // One line that says what is wrong and what would be right.
  pybind11::register_local_exception_translator([](std::exception_ptr raised) {
    try {
      if (raised) std::rethrow_exception(raised);
    } catch (const tool::TCliError& error) {
      PyErr_SetString(PyExc_ValueError, error.what());
    }
  });
  python::addSettings(module);
  python::addResults(module);
  python::addCalls(module);
  python::addJob(module);
  python::addLight(module);
  python::addRuns(module);
  python::addSearch(module);
}
