#include "tools/frame_tracker.h"

#include "tools/overlay.h"

namespace tool {

void addTrackingOptions(CLI::App& command, TTrackingOptions& options) {
  addFrameOptions(command, options.frames);
  addParamOptions(command, options.source);
  addTrackerOptions(command, options.tracker);
}

TTracking trackingOf(const TTrackingOptions& options) {
  const TTrackerOptions tracker = trackerOptionsOf(options.tracker);
  TParamSource source = options.source;
  // The joint does not matter.
  if (tracker.source == TSeamSource::contrast && source.type.empty() && source.file.empty())
    source.type = "buttGap";
  return {loadParams(source), tracker, options.tracker.isFirstOnly, preparationOf(options.frames)};
}

TFrameTracker::TFrameTracker(const TTracking& tracking) : how(tracking), tracker(how.params, how.tracker) {}

TTrackedFrame TFrameTracker::track(const TFrame& frame) {
  if (frame.startsSequence || how.isFirstOnly) {
    tracker.reset();
  }
  TTrackedFrame tracked{prepareImage(frame.image, how.preparation, frame.name), {}};
  TTimedSeam timed = trackTimed(tracker, tracked.image);
  const auto stored = [&](cv::Point2d point) { return toStored(point, how.preparation, frame.image.size()); };
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
  if (how.tracker.keepTrace) {
    record.trace = &tracker.lastTrace();
  }
  return tracked;
}

}  // namespace tool
