#include "tools/seam_run.h"

#include "tools/overlay.h"
#include "tools/progress.h"
#include "tools/stats.h"
#include "tools/stop_signal.h"
#include "tools/trace_json.h"

#include <algorithm>

namespace tool {
namespace {

TTrackerOptions traced(TTrackerOptions options) {
  options.keepTrace = true;
  return options;
}

}  // namespace

void TJitter::add(const std::optional<cv::Point2d>& seam) {
  if (seam && before[0] && before[1]) {
    lengthsPx.push_back(cv::norm(*before[0] - 2.0 * *before[1] + *seam));
  }
  before = {before[1], seam};
}

void TJitter::startSequence() {
  before = {};
}

std::optional<double> TJitter::medianPx() const {
  return lengthsPx.empty() ? std::nullopt : std::make_optional(percentile(lengthsPx, 0.5));
}

void TReasonTally::add(int frame, const TSeamFrame& seen) {
  auto row = std::find_if(counts.begin(), counts.end(), [&](const TRow& r) { return r.reason == seen.reason; });
  if (row == counts.end()) {
    row = counts.insert(row, {seen.reason, 0, frame, seen.sentence});
  }
  ++row->frames;
}

std::vector<TReasonTally::TRow> TReasonTally::rows() const {
  std::vector<TRow> sorted = counts;
  std::stable_sort(sorted.begin(), sorted.end(), [](const TRow& a, const TRow& b) { return a.frames > b.frames; });
  return sorted;
}

TSeamRun::TSeamRun(const TWeldParams& weldParams, TTrackerOptions options)
    : params(weldParams), tracker(weldParams, traced(options)) {}

TSeamFrame TSeamRun::next(const TFrame& frame) {
  if (frame.startsSequence) {
    tracker.reset();
    seamJitter.startSequence();
    lossRun = 0;
  }
  const TTrackedSeam seam = tracker.track(frame.image);
  const TFrameTrace& trace = tracker.lastTrace();
  TSeamFrame seen;
  seen.isFound = seam.state == TSeamState::found;
  seen.seam = seen.isFound ? seamOf(params, seam) : std::nullopt;
  seen.reason = trace.reason;
  seen.sentence = trace.sentence;
  seamJitter.add(seen.seam);
  count(seen.isFound);
  if (!seen.isFound) {
    lostReasons.add(frame.index, seen);
  }
  return seen;
}

void TSeamRun::count(bool isFound) {
  ++frameCount;
  foundCount += isFound ? 1 : 0;
  lossRun = isFound ? 0 : lossRun + 1;
  lossCount += lossRun == 1 ? 1 : 0;
  longestLossFrames = std::max(longestLossFrames, lossRun);
}

double TSeamRun::foundShare() const {
  return frameCount == 0 ? 0.0 : static_cast<double>(foundCount) / frameCount;
}

void addSeamRunOptions(CLI::App& command, TSeamRunOptions& options) {
  addFrameOptions(command, options.frames);
  command.add_flag("--exact", options.isExact, "The plain rules of the detectors, without the tracker's help");
}

TTrackerOptions trackerOf(const TSeamRunOptions& options) {
  return options.isExact ? TTrackerOptions::exact() : TTrackerOptions();
}

void followFrames(const TFrameOptions& options, const std::function<void(const TFrame&)>& follow) {
  const TPreparation preparation = preparationOf(options);
  TFrameSource source(listInputs(options.inputs));
  TProgress progress(source.frameCount());
  while (auto frame = source.next()) {
    frame->image = prepareImage(frame->image, preparation, frame->name);
    follow(*frame);
    progress.draw(frame->index + 1);
  }
  progress.clear();
  throwIfStopRequested();
}

}  // namespace tool
