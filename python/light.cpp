#include "light.h"

#include "frame.h"
#include "settings.h"

#include "tools/exposure.h"

#include <pybind11/numpy.h>

#include <opencv2/imgproc.hpp>

namespace py = pybind11;
using py::literals::operator""_a;

namespace python {
namespace {

using TSharedContour = std::shared_ptr<TContourCenterLine>;

// A read-only array over a list of the line, which it keeps alive.
template <typename TValue, typename TElement>
py::array over(const TSharedContour& line, const std::vector<TElement>& list, std::vector<py::ssize_t> shape) {
  py::array_t<TValue> values(std::move(shape), reinterpret_cast<const TValue*>(list.data()), py::cast(line));
  values.attr("setflags")("write"_a = false);
  return std::move(values);
}

py::ssize_t countOf(const TSharedContour& line) {
  return static_cast<py::ssize_t>(line->pts.size());
}

TSharedContour findByContrast(const py::object& frame, const py::kwargs& settings) {
  const cv::Mat image = pixelsOf(frame);
  const TContrastSearch search = takeContrast(settings);
  const py::gil_scoped_release release;
  return std::make_shared<TContourCenterLine>(findSeamByContrast(image, search));
}

tool::TExposure adviseExposure(const py::object& frame, int targetMean, int tolerance) {
  cv::Mat image = pixelsOf(frame);
  if (image.empty()) throw py::value_error("frame: has no pixels");
  if (targetMean < 1 || targetMean > 254) throw py::value_error("target_mean: must be 1 to 254 grey levels");
  if (tolerance < 0) throw py::value_error("tolerance: must be 0 grey levels or more");
  const py::gil_scoped_release release;
  if (image.channels() == 4) {
    cv::Mat colours;
    cv::cvtColor(image, colours, cv::COLOR_BGRA2BGR);
    image = colours;
  }
  LightingAdaptation::TExposureTarget target;
  target.meanGray = targetMean;
  target.tolerance = tolerance;
  return tool::exposureOf(image, target, {});
}

void addContour(py::module_& module) {
  using TLine = TContourCenterLine;
  py::class_<TLine, TSharedContour>(module, "Contour", "The centre line of a seam without a stripe; empty: none.")
      .def_property_readonly(
          "pts",
          [](const TSharedContour& line) {
            return over<float>(line, line->pts, {countOf(line), 2});
          },
          "float32 of shape (N, 2), px, along the line")
      .def_property_readonly(
          "widths_px",
          [](const TSharedContour& line) { return over<float>(line, line->widthsPx, {countOf(line)}); },
          "float32 of shape (N,), px across the line; 0 where bridged")
      .def_property_readonly(
          "measured", [](const TSharedContour& line) { return over<bool>(line, line->measured, {countOf(line)}); },
          "bool of shape (N,); False where bridged")
      .def_readonly("width_px", &TLine::widthPx)
      .def_readonly("contrast", &TLine::contrast, "ln(brightness of the line / of its sides)")
      .def_readonly("direction_deg", &TLine::directionDeg, "of the chord, above -90 to 90, y down")
      .def_readonly("confidence", &TLine::confidence, "0 to 1; 0: none found")
      .def_property_readonly("polarity", [](const TLine& line) {
        return py::module_::import("zelweld._enums").attr("Polarity")(static_cast<int>(line.polarity));
      });
}

}  // namespace

void addLight(py::module_& module) {
  addContour(module);
  module.def(
      "find_seam_by_contrast", findByContrast, "frame"_a,
      "The seam that no stripe shows. Settings: polarity, direction_deg, direction_tol_deg, rough_pos (x, y), "
      "band_px, reach_px, min_width_px, max_width_px, min_length_px, min_confidence.");
  using TAdvice = tool::TExposure;
  py::class_<TAdvice>(module, "Exposure", "The light of a frame.")
      .def_readonly("mean_gray", &TAdvice::meanGray, "grey levels; large reflections count in part")
      .def_readonly("bright_pixels", &TAdvice::brightPixelNum, "above grey level 240, weighted")
      .def_property_readonly("has_stripe", [](const TAdvice& e) { return e.light.columns > 0; })
      .def_property_readonly(
          "saturated_share", [](const TAdvice& e) { return e.light.saturatedShare; }, "of the stripe, 0 to 1")
      .def_property_readonly(
          "peak", [](const TAdvice& e) { return e.light.peakOverBackground; },
          "of the stripe over its background, grey levels")
      .def_readonly("factor", &TAdvice::factor, "for exposure time or gain, 1/4 to 4; 1: leave it");
  module.def("exposure_advice", adviseExposure, "frame"_a, "target_mean"_a = 40, "tolerance"_a = 10,
             "What to multiply the exposure with: by the stripe; without one by the mean, grey levels.");
}

}  // namespace python
