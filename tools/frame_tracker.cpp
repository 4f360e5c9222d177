#include "tools/frame_tracker.h"

#include "tools/overlay.h"
#include "tools/text.h"

#include <cstdio>

namespace tool {

void addTrackingOptions(CLI::App& command, TTrackingOptions& options) {
  addFrameOptions(command, options.frames);
  addParamOptions(command, options.source);
  addTrackerOptions(command, options.tracker);
}

TTracking trackingOf(const TTrackingOptions& options) {
  TParamSource source = options.source;
  // The joint does not matter.
  if (options.tracker.source == sourceText(TSeamSource::contrast) && source.type.empty() && source.file.empty()) {
    source.type = "buttGap";
  }
  TTracking tracking{loadJob(source), options.tracker.isFirstOnly};
  tracking.tracker = trackerOptionsOf(options.tracker, tracking.tracker);
  tracking.preparation = preparationOf(options.frames, tracking.preparation);
  return tracking;
}

std::vector<std::filesystem::path> filesOf(const TTrackingOptions& options) {
  std::vector<std::filesystem::path> files;
  for (const TInputFile& input : listInputs(options.frames.inputs)) {
    files.push_back(input.path);
  }
  if (!options.source.file.empty()) {
    files.emplace_back(options.source.file);
  }
  return files;
}

TFrameTracker::TFrameTracker(const TTracking& tracking) : how(tracking), tracker(makeWeldTracker(how)) {}

TTrackedFrame TFrameTracker::track(const TFrame& frame) {
  if (frame.startsSequence || how.isFirstOnly) {
    tracker.reset();
  }
  const bool isReadable = frame.problem.empty();
  storedSize = isReadable ? frame.image.size() : storedSize;
  TTrackedFrame tracked{isReadable ? prepareImage(frame.image, how.preparation, frame.name) : cv::Mat(), {}};
  TTimedSeam timed = trackTimed(tracker, tracked.image);
  const auto stored = [&](cv::Point2d point) { return toStored(point, how.preparation, storedSize); };
  TFrameRecord& record = tracked.record;
  record.frame = frame.index;
  record.file = frame.name;
  record.startsSequence = frame.startsSequence;
  record.ms = timed.ms;
  record.tracked = std::move(timed.seam);
  record.seam = seamOf(how.params, record.tracked);
  if (record.seam) {
    record.storedSeam = stored(*record.seam);
  }
  for (const cv::Point2f& point : record.tracked.line.stripePts) {
    record.storedStripePts.push_back(stored(point));
  }
  if (!isReadable) {
    unreadable = tracker.lastTrace();
    unreadable.sentence = onOneLine(frame.problem);
  }
  if (how.tracker.keepTrace) {
    record.trace = isReadable ? &tracker.lastTrace() : &unreadable;
  }
  return tracked;
}

// The places of a frame that cannot be read are those in an image as large as the last one.
std::string TFrameTracker::memory() const {
  return std::to_string(storedSize.width) + "x" + std::to_string(storedSize.height) + " " + tracker.memory();
}

bool TFrameTracker::setMemory(const std::string& bytes) {
  int width = 0;
  int height = 0;
  const std::size_t cut = bytes.find(' ');
  const bool isGood = cut != std::string::npos && std::sscanf(bytes.c_str(), "%9dx%9d", &width, &height) == 2 &&
                      tracker.setMemory(bytes.substr(cut + 1));
  storedSize = isGood ? cv::Size(width, height) : storedSize;
  return isGood;
}

}  // namespace tool
