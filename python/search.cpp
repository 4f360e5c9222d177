#include "search.h"

#include "feed.h"
#include "job.h"
#include "seen_rows.h"
#include "settings.h"

#include "tools/advice.h"
#include "tools/cli_error.h"
#include "tools/sweep_table.h"

#include <pybind11/stl.h>

namespace py = pybind11;
using py::literals::operator""_a;

namespace python {
namespace {

// Frames by name, without their pixels.
std::vector<tool::TFrame> framesOf(const std::vector<std::pair<std::string, bool>>& names) {
  std::vector<tool::TFrame> frames;
  for (const auto& [name, startsSequence] : names)
    frames.push_back({static_cast<int>(frames.size()), name, {}, {}, startsSequence});
  return frames;
}

tool::TTruth truthOf(const std::string& file, const std::string& point) {
  if (file.empty() && !point.empty()) throw py::value_error("point: needs truth");
  return file.empty() ? tool::TTruth() : tool::TTruth(file, point);
}

py::object orNone(const std::optional<double>& number) {
  return number ? py::object(py::float_(*number)) : py::none();
}

py::dict rowDict(const tool::TSweepRow& row) {
  const tool::TSweepPoint& p = row.point;
  return py::dict("value"_a = p.value, "found_share"_a = p.foundShare, "jitter_px"_a = orNone(p.jitterPx),
                  "confidence"_a = p.confidence, "stripe_end_share"_a = p.stripeEndShare, "apart_px"_a = p.apartPx,
                  "judged"_a = p.truth ? p.truth->judged : 0, "wrong"_a = p.truth ? p.truth->wrong : 0,
                  "error_px"_a = orNone(p.truth ? p.truth->medianErrorPx() : std::nullopt),
                  "longest_loss"_a = row.longestLoss, "is_good"_a = row.isGood, "reason"_a = row.reason);
}

py::dict sweepResult(const TWeldJob& job, const tool::TSweepRange& range,
                     const std::vector<std::pair<std::string, bool>>& names, const py::dict& columns,
                     const tool::TTruth& truth) {
  const std::vector<tool::TSeamFrame> seen = seenRows(columns);
  const std::size_t values = range.values.size();
  if (seen.size() != names.size() * values) throw py::value_error("rows: not one for each frame and value");
  tool::TSweepTable table(job.params.weldType, range);
  auto row = seen.begin();
  for (const tool::TFrame& frame : framesOf(names)) {
    table.add(frame, {row, row + static_cast<std::ptrdiff_t>(values)}, truth);
    row += static_cast<std::ptrdiff_t>(values);
  }
  const tool::TSweepResult result = table.result();
  if (!truth.isEmpty() && !result.rows.front().point.truth)
    throw py::value_error("truth: labels none of the frames");
  py::list rows;
  for (const tool::TSweepRow& each : result.rows) rows.append(rowDict(each));
  const bool suggests = result.objection.empty();
  const auto at = [&](std::size_t i) { return result.rows[i].point.value; };
  return py::dict(
      "parameter"_a = result.parameter, "frames"_a = result.frames, "rows"_a = rows,
      "suggestion"_a = orNone(suggests ? std::make_optional(at(result.good->middle)) : std::nullopt),
      "good"_a = suggests ? py::object(py::make_tuple(at(result.good->first), at(result.good->last))) : py::none(),
      "objection"_a = result.objection);
}

TSharedJob jobOf(const tool::TScene& scene, const tool::TSetting& setting) {
  TWeldJob job;
  job.params = setting.params;
  job.tracker = setting.tracker;
  job.preparation = tool::preparationOf(scene, setting);
  return std::make_shared<TWeldJob>(std::move(job));
}

// Trials that Python runs, wherever it likes: follow(stretches, jobs) gives the rows of every job on every frame.
tool::TTryAll triesOf(const tool::TScene& scene, const py::function& follow) {
  return
      [&scene, follow](const std::vector<tool::TStretch>& stretches, const std::vector<tool::TSetting>& settings) {
        std::vector<tool::TTrial> trials;
        py::list jobs;
        for (const tool::TSetting& setting : settings) {
          trials.push_back({setting, {}, {}, {}, {}, {}});
          jobs.append(jobOf(scene, setting));
        }
        py::list places;
        std::size_t frames = 0;
        for (const tool::TStretch& stretch : stretches) {
          places.append(py::make_tuple(stretch.first, stretch.last));
          frames += static_cast<std::size_t>(stretch.last - stretch.first + 1);
        }
        if (settings.empty() || frames == 0) return trials;
        const std::vector<tool::TSeamFrame> seen = seenRows(follow(places, jobs));
        if (seen.size() != frames * settings.size())
          throw py::value_error("rows: not one for each frame and setting");
        auto row = seen.begin();
        for (const tool::TStretch& stretch : stretches) {
          for (int place = stretch.first; place <= stretch.last; ++place) {
            for (tool::TTrial& trial : trials) addSeen(trial, scene, place, place == stretch.first, *row++);
          }
        }
        return trials;
      };
}

py::dict figuresOf(const tool::TTrial& trial) {
  const tool::TSeamFigures& figures = trial.figures;
  return py::dict("found"_a = figures.found(), "losses"_a = figures.losses(), "wrong"_a = trial.truth.wrong,
                  "jitter_px"_a = orNone(figures.jitter().medianPx()),
                  "error_px"_a = orNone(trial.truth.medianErrorPx()));
}

py::dict adviceResult(const TWeldJob& job, const tool::TScene& scene, const py::function& follow,
                      const py::function& read) {
  const auto picture = [&](int place) {
    TFeed feed(read(place), place, py::none());
    const std::optional<tool::TFrame> frame = feed.next();
    return frame ? tool::prepared(*frame, scene.preparation).image.clone() : cv::Mat();
  };
  const tool::TSetting given{job.params, job.tracker, 0, {}, false};
  const tool::TAdvice advice = tool::advise(scene, given, triesOf(scene, follow), picture);
  const tool::TSifting& sifting = advice.sifting;
  py::dict result("frames"_a = advice.given.figures.frames(), "tried"_a = sifting.tried,
                  "before"_a = figuresOf(advice.given), "job"_a = py::none(), "after"_a = py::none(),
                  "changes"_a = std::vector<std::string>(), "objection"_a = sifting.objection,
                  "refused"_a = std::vector<std::string>(), "reasons"_a = py::list());
  if (advice.best) {
    result["job"] = jobOf(scene, advice.best->setting);
    result["after"] = figuresOf(*advice.best);
    result["changes"] = advice.best->setting.changes;
  } else if (sifting.next) {
    result["refused"] = sifting.next->setting.changes;
  }
  py::list reasons;
  for (const auto& row : sifting.reasons)
    reasons.append(py::make_tuple(row.reason, row.frames, row.firstFrame, row.sentence));
  result["reasons"] = reasons;
  return result;
}

}  // namespace

void addSearch(py::module_& module) {
  module.def(
      "sweep_result",
      [](const TWeldJob& job, const std::string& parameter, const std::vector<double>& values,
         const std::vector<std::pair<std::string, bool>>& names, const py::dict& columns, const std::string& truth,
         const std::string& point) {
        return sweepResult(job, rangeOf(job, parameter, values), names, columns, truthOf(truth, point));
      },
      "job"_a, "parameter"_a, "values"_a, "names"_a, "columns"_a, "truth"_a, "point"_a);
  module.def(
      "advice_result",
      [](const TWeldJob& job, const std::vector<std::pair<std::string, bool>>& names, const py::function& follow,
         const py::function& read, const std::string& truth, const std::string& point) {
        tool::requireAdvisable(job);
        return adviceResult(job, {framesOf(names), job.preparation, truthOf(truth, point)}, follow, read);
      },
      "job"_a, "names"_a, "follow"_a, "read"_a, "truth"_a, "point"_a);
}

}  // namespace python
