#include "job.h"

#include "frame.h"
#include "results.h"
#include "settings.h"

#include "tools/names.h"
#include "tools/output_file.h"
#include "tools/param_json.h"

#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <filesystem>
#include <mutex>

namespace py = pybind11;
using py::literals::operator""_a;

namespace python {
namespace {

// A tracker behind a lock: Python's threads may share it, and none holds the interpreter while a frame is worked
// on.
class TPyTracker {
public:
  explicit TPyTracker(const TWeldJob& job) : tracker(makeWeldTracker(job)), keepsTrace(job.tracker.keepTrace) {}

  TSeam track(const py::object& frame) {
    const cv::Mat image = pixelsOf(frame);
    const py::gil_scoped_release release;
    const std::lock_guard<std::mutex> lock(mutex);
    TTrackedSeam seam = tracker.track(image);
    TSeam result{seam.state, seam.weldPos, std::make_shared<TWeldLineRes>(std::move(seam.line)),
                 std::move(seam.measurement), nullptr};
    if (keepsTrace) result.trace = std::make_shared<TFrameTrace>(tracker.lastTrace());
    return result;
  }

  void reset() {
    const py::gil_scoped_release release;
    const std::lock_guard<std::mutex> lock(mutex);
    tracker.reset();
  }

private:
  std::mutex mutex;
  TWeldTracker tracker;
  bool keepsTrace;
};

std::unique_ptr<TPyTracker> makeTracker(const py::object& joint, const py::object& position, py::dict settings) {
  if (!py::isinstance<TWeldJob>(joint)) return std::make_unique<TPyTracker>(takeJob(joint, position, settings));
  if (!settings.empty()) throw py::type_error("Tracker: a job takes no further settings");
  return std::make_unique<TPyTracker>(joint.cast<TWeldJob>());
}

TJointParams paramsOf(const TWeldJob& job) {
  if (job.ownJoint) throw py::value_error("params: a joint of one's own has none");
  return {findWeldJoint(job.params.weldType), job.params};
}

py::object prepare(const TWeldJob& job, const py::object& frame) {
  const cv::Mat stored = pixelsOf(frame);
  const std::string problem = findPreparationProblem(job.preparation, stored);
  if (!problem.empty()) throw py::value_error("frame: " + problem);
  return pixelsTo(prepareImage(stored, job.preparation));
}

void addTracker(py::module_& module) {
  py::class_<TPyTracker>(module, "Tracker", "Follows one seam from frame to frame.")
      .def(py::init([](const py::object& joint, const py::object& position, const py::kwargs& settings) {
             return makeTracker(joint, position, settings);
           }),
           "joint"_a, "position"_a = "centre", "Of a joint and its settings, or of a Job.")
      .def("track", &TPyTracker::track, "frame"_a,
           "The seam in the next frame: uint8 of shape (H, W), (H, W, 3) (BGR) or (H, W, 4) (BGRA), not copied.")
      .def("reset", &TPyTracker::reset, "Forgets the frames so far.");
}

}  // namespace

TSharedJob jobOfText(const std::string& text) {
  TJobReading reading = parseWeldJob(text);
  if (!reading.problem.empty()) throw py::value_error(reading.problem);
  return std::make_shared<TWeldJob>(std::move(reading.job));
}

void addJob(py::module_& module) {
  py::class_<TWeldJob, TSharedJob>(module, "Job", "All that a seam is looked for with: docs/job.md.")
      .def(py::init([](const py::object& joint, const py::object& position, const py::kwargs& settings) {
             return std::make_shared<TWeldJob>(takeJob(joint, position, settings));
           }),
           "joint"_a, "position"_a = "centre")
      .def_static("from_text", jobOfText, "text"_a)
      .def_static(
          "load",
          [](const std::filesystem::path& path) {
            return std::make_shared<TWeldJob>(tool::loadJob({path.string(), "", "", {}}));
          },
          "path"_a, "A job, or a parameter file of `zelweld params`.")
      .def(
          "save",
          [](const TWeldJob& job, const std::filesystem::path& path) {
            tool::writeWholeFile(path, writeWeldJob(job));
          },
          "path"_a)
      .def_property_readonly("text", [](const TWeldJob& job) { return writeWeldJob(job); })
      .def_property_readonly("joint", [](const TWeldJob& job) { return snakeCase(tool::nameOf(job)); })
      .def_property_readonly("params", paramsOf)
      .def("prepare", prepare, "frame"_a,
           "The image to hand a tracker: cut, turned, one channel, as the job says.")
      .def(
          "__eq__", [](const TWeldJob& a, const TWeldJob& b) { return writeWeldJob(a) == writeWeldJob(b); },
          py::is_operator())
      .def("__hash__", [](const TWeldJob& job) { return std::hash<std::string>()(writeWeldJob(job)); })
      .def("__repr__", [](const TWeldJob& job) { return "<Job " + tool::nameOf(job) + ">"; })
      .def(py::pickle([](const TWeldJob& job) { return writeWeldJob(job); },
                      [](const std::string& text) { return jobOfText(text); }));
  addTracker(module);
}

}  // namespace python
