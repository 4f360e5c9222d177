#include "runs.h"

#include "feed.h"
#include "frame.h"
#include "job.h"
#include "seen_rows.h"
#include "settings.h"

#include "tools/frame_tracker.h"
#include "tools/input_list.h"
#include "tools/measures.h"
#include "tools/record_columns.h"
#include "tools/seam_run.h"
#include "tools/sweep_table.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>

namespace py = pybind11;
using py::literals::operator""_a;

namespace python {
namespace {

using TMemories = std::vector<std::string>;  // one a tracker

py::list bytesOf(const TMemories& memories) {
  py::list list;
  for (const std::string& memory : memories) list.append(py::bytes(memory));
  return list;
}

// What every run ends with: its table, what its trackers remembered before its first frame and behind its last
// one, and the frames that could not be read.
struct TRunEnd {
  py::dict columns;
  TMemories before;
  TMemories after;
  int count = 0;      // of frames
  py::list problems;  // why frames cannot be read

  py::dict asDict() const {
    return py::dict("columns"_a = columns, "before"_a = bytesOf(before), "after"_a = bytesOf(after),
                    "count"_a = count, "problems"_a = problems);
  }
};

// The frames of a run; those of its warm-up are only looked at.
struct TStretch {
  py::iterable items;
  int warmUp = 0;   // frames that belong to the run before
  py::list memory;  // to begin with, one a tracker; empty: none
  py::object tick;
};

template <typename TTracker>
void remember(const TStretch& stretch, const std::vector<TTracker*>& trackers) {
  if (stretch.memory.empty()) return;
  bool isGood = stretch.memory.size() == trackers.size();
  for (std::size_t i = 0; isGood && i < trackers.size(); ++i)
    isGood = trackers[i]->setMemory(stretch.memory[i].template cast<std::string>());
  if (!isGood) throw py::value_error("memory: not of trackers of this job and version");
}

template <typename TTracker>
TMemories memoriesOf(const std::vector<TTracker*>& trackers) {
  TMemories memories;
  for (const TTracker* const tracker : trackers) memories.push_back(tracker->memory());
  return memories;
}

// Hands the frames on, and takes down what the trackers remember behind the warm-up and at the end. The first
// frame behind the warm-up has the number 0.
template <typename TTracker, typename TLook>
void follow(const TStretch& stretch, const std::vector<TTracker*>& trackers, TRunEnd& end, TLook look) {
  remember(stretch, trackers);
  TFeed feed(stretch.items, -stretch.warmUp, stretch.tick);
  end.before = memoriesOf(trackers);
  while (const std::optional<tool::TFrame> frame = feed.next()) {
    const bool counts = frame->index >= 0;
    end.count += counts ? 1 : 0;
    if (counts && !frame->problem.empty()) end.problems.append(frame->problem);
    look(*frame, counts);
    if (frame->index == -1) end.before = memoriesOf(trackers);
  }
  end.after = memoriesOf(trackers);
}

// Columns of the table of tracked frames.
class TTrackTable {
public:
  explicit TTrackTable(TWeldType type) : measures(tool::measuresOf(type)) {
    values.resize(tool::recordColumns().size() + measures.size());
  }

  void add(const tool::TFrameRecord& record) {
    frames.push_back(record.frame);
    files.push_back(record.file);
    states.push_back(static_cast<int>(record.tracked.state));
    times.push_back(record.ms);
    std::size_t i = 0;
    for (const tool::TColumn& column : tool::recordColumns()) values[i++].push_back(column.get(record));
    for (const tool::TMeasure& measure : measures) values[i++].push_back(measure.get(record.tracked.measurement));
  }

  py::dict columns() const {
    py::dict columns("file"_a = files);
    put(columns, "frame", frames);
    put(columns, "state", states);
    std::size_t i = 0;
    for (const tool::TColumn& column : tool::recordColumns()) put(columns, column.name, values[i++]);
    for (const tool::TMeasure& measure : measures) put(columns, measure.name, values[i++]);
    put(columns, "ms", times);
    return columns;
  }

private:
  template <typename TValue>
  static void put(py::dict& columns, const std::string& name, const std::vector<TValue>& column) {
    columns[py::str(snakeCase(name))] =
        py::array_t<TValue>(static_cast<py::ssize_t>(column.size()), column.data());
  }

  std::vector<tool::TMeasure> measures;
  std::vector<int> frames;
  std::vector<std::string> files;
  std::vector<int> states;
  std::vector<double> times;
  std::vector<std::vector<double>> values;
};

py::dict trackRun(const TWeldJob& job, const TStretch& stretch) {
  tool::TTracking tracking{job};
  tracking.tracker.keepTrace = false;
  tool::TFrameTracker tracker(tracking);
  TTrackTable table(job.params.weldType);
  TRunEnd end;
  follow<tool::TFrameTracker>(stretch, {&tracker}, end, [&](const tool::TFrame& frame, bool counts) {
    const py::gil_scoped_release release;
    const tool::TTrackedFrame tracked = tracker.track(frame);
    if (counts) table.add(tracked.record);
  });
  end.columns = table.columns();
  return end.asDict();
}

// Every frame under every setting, decoded once.
py::dict followAll(std::vector<tool::TSeamRun> runs, const TStretch& stretch) {
  TSeenRows rows;
  std::vector<std::pair<std::string, bool>> frames;
  std::vector<tool::TSeamRun*> trackers;
  for (tool::TSeamRun& run : runs) trackers.push_back(&run);
  TRunEnd end;
  follow(stretch, trackers, end, [&](const tool::TFrame& stored, bool counts) {
    const py::gil_scoped_release release;
    if (counts) frames.emplace_back(stored.name, stored.startsSequence);
    for (tool::TSeamRun& run : runs) {
      const tool::TSeamFrame seen = run.next(tool::prepared(stored, run.tracking().preparation));
      if (counts) rows.add(seen);
    }
  });
  end.columns = rows.columns();
  end.columns["frames"] = frames;
  return end.asDict();
}

// By its name in Python or in the tools.
std::string measureNamed(const TWeldJob& job, const std::string& name) {
  for (const tool::TMeasure& measure : tool::measuresOf(job.params.weldType)) {
    if (snakeCase(measure.name) == name) return measure.name;
  }
  return name;
}

py::list listInputs(const std::vector<std::string>& inputs) {
  py::list files;
  for (const tool::TInputFile& file : tool::listInputs(inputs))
    files.append(py::make_tuple(file.path.string(), py::none(), file.startsSequence, file.isVideo));
  return files;
}

// The items with their frames in memory: those of a video one by one.
py::list readItems(const py::iterable& items) {
  py::list frames;
  TFeed feed(items, 0, py::none());
  while (const std::optional<tool::TFrame> frame = feed.next()) {
    const py::object source =
        frame->problem.empty() ? py::object(pixelsTo(frame->image)) : py::object(py::str(frame->problem));
    frames.append(py::make_tuple(frame->name, source, frame->startsSequence, false));
  }
  return frames;
}

std::vector<std::string> sortNames(std::vector<std::string> names) {
  std::sort(names.begin(), names.end(), tool::naturalLess);
  return names;
}

// (name, unit, type) of every column of the table of tracked frames.
py::list trackColumns(const TWeldJob& job) {
  py::list columns;
  const auto add = [&](const std::string& name, const std::string& unit, const char* type) {
    columns.append(py::make_tuple(snakeCase(name), unit, type));
  };
  add("frame", "", "i8");
  add("file", "", "U");
  add("state", "", "i1");
  for (const tool::TColumn& column : tool::recordColumns())
    add(column.name, column.unit, column.digits > 0 ? "f8" : "i4");
  for (const tool::TMeasure& measure : tool::measuresOf(job.params.weldType))
    add(measure.name, measure.unit, "f8");
  add("ms", "ms", "f8");
  return columns;
}

}  // namespace

void addRuns(py::module_& module) {
  module.def("list_inputs", listInputs, "inputs"_a, "(name, None, starts_sequence, is_video) of every file.");
  module.def("read_items", readItems, "items"_a, "The same with frames in memory, those of a video one by one.");
  module.def("sort_names", sortNames, "names"_a, "As people count: img2 before img10.");
  module.def("track_columns", trackColumns, "job"_a, "(name, unit, type) of every column of a table of frames.");
  module.def(
      "track_run",
      [](const TWeldJob& job, const py::iterable& items, int warmUp, const py::list& memory,
         const py::object& tick) {
        return trackRun(job, {items, warmUp, memory, tick});
      },
      "job"_a, "items"_a, "warm_up"_a, "memory"_a, "tick"_a, "Follows the seam through a run of frames.");
  module.def(
      "sweep_run",
      [](const TWeldJob& job, const std::string& parameter, const std::vector<double>& values,
         const std::string& objective, const py::iterable& items, int warmUp, const py::list& memory,
         const py::object& tick) {
        return followAll(tool::sweptRuns({job}, rangeOf(job, parameter, values), measureNamed(job, objective)),
                         {items, warmUp, memory, tick});
      },
      "job"_a, "parameter"_a, "values"_a, "objective"_a, "items"_a, "warm_up"_a, "memory"_a, "tick"_a,
      "Follows the seam under each value of a parameter.");
  module.def(
      "trial_run",
      [](const std::vector<TSharedJob>& jobs, const py::iterable& items, int warmUp, const py::list& memory,
         const py::object& tick) {
        std::vector<tool::TSeamRun> runs;
        for (const TSharedJob& job : jobs) runs.emplace_back(tool::TTracking{*job});
        return followAll(std::move(runs), {items, warmUp, memory, tick});
      },
      "jobs"_a, "items"_a, "warm_up"_a, "memory"_a, "tick"_a, "Follows the seam under each of several jobs.");
}

}  // namespace python
