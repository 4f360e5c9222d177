#include "results.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace py = pybind11;

namespace python {
namespace {

py::object enumerator(const char* enumeration, std::int32_t value) {
  return py::module_::import("zelweld._enums").attr(enumeration)(value);
}

py::tuple pointOf(cv::Point2f point) {
  return py::make_tuple(point.x, point.y);
}

// (N, 2) float32 over the points themselves, which the array keeps alive; read-only, as the results are.
py::array stripeOf(const TSharedLine& line) {
  const auto owner = std::make_unique<TSharedLine>(line);
  const auto count = static_cast<py::ssize_t>(line->stripePts.size());
  static_assert(sizeof(cv::Point2f) == 2 * sizeof(float), "points lie side by side");
  py::array_t<float> points({count, py::ssize_t{2}}, reinterpret_cast<const float*>(line->stripePts.data()),
                            py::cast(line));
  points.attr("setflags")(py::arg("write") = false);
  return std::move(points);
}

std::string textOf(double number) {
  return std::isnan(number) ? "nan" : cv::format("%.2f", number);
}

std::string representation(const TSeam& seam) {
  const char* const states[] = {"lost", "found", "held"};
  return std::string("<Seam ") + states[static_cast<int>(seam.state)] + " at (" + textOf(seam.weldPos.x) + ", " +
         textOf(seam.weldPos.y) + ")>";
}

void addMeasurement(py::module_& module) {
  py::class_<TFeaturePoint>(module, "FeaturePoint", "A named point of a joint.")
      .def_property_readonly(
          "feature", [](const TFeaturePoint& p) { return enumerator("Feature", static_cast<int>(p.feature)); })
      .def_property_readonly(
          "pos", [](const TFeaturePoint& p) { return pointOf(p.pos); }, "(x, y), px")
      .def_readonly("sigma_px", &TFeaturePoint::sigmaPx, "standard deviation of the position, px");
  using TM = TJointMeasurement;
  py::class_<TM>(module, "Measurement", "Measures of one frame, px and degrees of the image; nan: there is none.")
      .def_readonly("is_valid", &TM::isValid)
      .def_property_readonly("weld_type",
                             [](const TM& m) { return enumerator("WeldType", static_cast<int>(m.weldType)); })
      .def_readonly("confidence", &TM::confidence, "0 to 1")
      .def_readonly("points", &TM::points)
      .def_readonly("width_px", &TM::widthPx)
      .def_readonly("depth_px", &TM::depthPx)
      .def_readonly("gap_px", &TM::gapPx)
      .def_readonly("mismatch_px", &TM::mismatchPx)
      .def_readonly("area_px2", &TM::areaPx2)
      .def_readonly("left_angle_deg", &TM::leftAngleDeg)
      .def_readonly("right_angle_deg", &TM::rightAngleDeg)
      .def_readonly("included_angle_deg", &TM::includedAngleDeg)
      .def_readonly("base_angle_deg", &TM::baseAngleDeg)
      .def_readonly("left_radius_px", &TM::leftRadiusPx)
      .def_readonly("right_radius_px", &TM::rightRadiusPx);
}

void addLine(py::module_& module) {
  py::class_<TWeldLineRes, std::shared_ptr<TWeldLineRes>>(module, "Line", "What a frame gave.")
      .def_readonly("is_found", &TWeldLineRes::isFound)
      .def_property_readonly(
          "pos", [](const TWeldLineRes& line) { return pointOf(line.weldPos); },
          "(x, y), px; (0, 0) when not found")
      .def_property_readonly(
          "stripe", [](const std::shared_ptr<TWeldLineRes>& line) { return stripeOf(line); },
          "stripe centres, float32 of shape (N, 2), px, left to right")
      .def_property_readonly(
          "aux", [](const TWeldLineRes& l) { return py::make_tuple(l.auxVal1, l.auxVal2, l.auxVal3, l.auxVal4); })
      .def_readonly("track_val", &TWeldLineRes::trackVal);
}

void addTrace(py::module_& module) {
  py::class_<TTraceCheck>(module, "Check", "A test that a frame was put to.")
      .def_readonly("name", &TTraceCheck::name)
      .def_readonly("element", &TTraceCheck::element)
      .def_readonly("unit", &TTraceCheck::unit)
      .def_readonly("parameter", &TTraceCheck::parameter)
      .def_readonly("measured", &TTraceCheck::measured)
      .def_readonly("limit", &TTraceCheck::limit)
      .def_readonly("passed", &TTraceCheck::passed);
  py::class_<TFrameTrace, std::shared_ptr<TFrameTrace>>(module, "Trace", "Why a frame ended as it did.")
      .def_readonly("sentence", &TFrameTrace::sentence, "for people")
      .def_readonly("reason", &TFrameTrace::reason, "a heading over all frames that ended so")
      .def_readonly("total_us", &TFrameTrace::totalUs, "time that the frame took, microseconds")
      .def_property_readonly(
          "checks",
          [](const TFrameTrace& trace) {
            std::vector<TTraceCheck> checks;
            if (trace.decisive >= 0) checks = trace.attempts[static_cast<std::size_t>(trace.decisive)].checks;
            checks.insert(checks.end(), trace.gate.begin(), trace.gate.end());
            return checks;
          },
          "those of the decisive attempt and of the gate, in the order in which they ran");
}

}  // namespace

void addResults(py::module_& module) {
  addMeasurement(module);
  addLine(module);
  addTrace(module);
  py::class_<TSeam>(module, "Seam",
                    "A tracked frame. Weld along a found seam, go on along a held one, stop on a lost one.")
      .def_property_readonly("state",
                             [](const TSeam& s) { return enumerator("SeamState", static_cast<int>(s.state)); })
      .def_property_readonly(
          "pos", [](const TSeam& s) { return pointOf(s.weldPos); },
          "(x, y) to steer by, px: of this frame when found, the last good one when held, (0, 0) when lost")
      .def_property_readonly("line", [](const TSeam& s) { return std::const_pointer_cast<TWeldLineRes>(s.line); })
      .def_property_readonly(
          "stripe", [](const TSeam& s) { return stripeOf(std::const_pointer_cast<TWeldLineRes>(s.line)); },
          "stripe centres, float32 of shape (N, 2), px, left to right")
      .def_readonly("measurement", &TSeam::measurement)
      .def_property_readonly(
          "trace", [](const TSeam& s) { return std::const_pointer_cast<TFrameTrace>(s.trace); },
          "None unless the tracker keeps traces")
      .def("__repr__", representation);
}

}  // namespace python
