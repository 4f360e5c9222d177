#include "tools/seam_run.h"

#include "tools/cli_error.h"
#include "tools/progress.h"
#include "tools/stats.h"
#include "tools/stop_signal.h"
#include "tools/text.h"
#include "tools/trace_json.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tool {
namespace {

TTracking traced(TTracking tracking) {
  tracking.tracker.keepTrace = true;
  return tracking;
}

constexpr double kStripeEndPx = 5.0;  // a seam nearer to the stripe's first or last column is at its end

// The ends are what a plate is welded at.
bool isAtStripeEnd(TWeldType type, const TTrackedSeam& seam) {
  const std::vector<cv::Point2f>& points = seam.line.stripePts;
  if (type == TWeldType::plate || points.empty()) {
    return false;
  }
  const auto x = static_cast<double>(seam.weldPos.x);
  return x - static_cast<double>(points.front().x) < kStripeEndPx ||
         static_cast<double>(points.back().x) - x < kStripeEndPx;
}

// What is to be steady: the seam point, or a measure as the place on a line.
std::optional<cv::Point2d> steadyPlace(const std::optional<TMeasure>& objective, const TTrackedSeam& seam,
                                       const std::optional<cv::Point2d>& point) {
  if (!objective) {
    return point;
  }
  const double value = objective->get(seam.measurement);
  return std::isfinite(value) ? std::make_optional(cv::Point2d(value, 0.0)) : std::nullopt;
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

TSeamRun::TSeamRun(const TTracking& tracking, std::optional<TMeasure> steadied)
    : how(traced(tracking)),
      tracker(makeWeldTracker(how)),
      objective(std::move(steadied)),
      measures(measuresOf(how.params.weldType)),
      measured(measures.size()) {}

TSeamFrame TSeamRun::next(const TFrame& frame) {
  if (frame.startsSequence || how.isFirstOnly) {
    tracker.reset();
  }
  if (frame.startsSequence) {
    seamJitter.startSequence();
    lossRun = 0;
  }
  lastSeam = tracker.track(frame.image);
  const TTrackedSeam& seam = lastSeam;
  const TFrameTrace& trace = tracker.lastTrace();
  TSeamFrame seen;
  seen.isFound = seam.state == TSeamState::found;
  seen.seam = seen.isFound ? seamOf(how.params, seam) : std::nullopt;
  seen.reason = trace.reason;
  seen.sentence = frame.problem.empty() ? explanationOf(trace) : onOneLine(frame.problem);
  seen.confidence = static_cast<double>(seam.measurement.confidence);
  seen.isAtStripeEnd = seen.seam && isAtStripeEnd(how.params.weldType, seam);
  seamJitter.add(steadyPlace(objective, seam, seen.seam));
  measure(seam);
  count(seen);
  if (!seen.isFound) {
    lostReasons.add(frame.index, seen);
  }
  return seen;
}

void TSeamRun::measure(const TTrackedSeam& seam) {
  for (std::size_t i = 0; i < measures.size(); ++i) {
    const double value = measures[i].get(seam.measurement);
    if (std::isfinite(value)) {
      measured[i].push_back(value);
    }
  }
}

double TSeamRun::medianOf(const std::string& name) const {
  for (std::size_t i = 0; i < measures.size(); ++i) {
    if (measures[i].name == name && !measured[i].empty()) {
      return percentile(measured[i], 0.5);
    }
  }
  return TJointMeasurement::kNone;
}

void TSeamRun::count(const TSeamFrame& seen) {
  const bool isFound = seen.isFound;
  ++frameCount;
  foundCount += isFound ? 1 : 0;
  stripeEndCount += seen.isAtStripeEnd ? 1 : 0;
  if (isFound) {
    confidences.push_back(seen.confidence);
  }
  lossRun = isFound ? 0 : lossRun + 1;
  lossCount += lossRun == 1 ? 1 : 0;
  longestLossFrames = std::max(longestLossFrames, lossRun);
}

double TSeamRun::foundShare() const {
  return frameCount == 0 ? 0.0 : static_cast<double>(foundCount) / frameCount;
}

std::optional<TLimitKind> TSeamRun::limitOf(const std::string& parameter) const {
  for (const TTraceAttempt& attempt : tracker.lastTrace().attempts) {
    for (const TTraceCheck& check : attempt.checks) {
      if (parameter == check.parameter) {
        return check.kind;
      }
    }
  }
  return std::nullopt;
}

double TSeamRun::stripeEndShare() const {
  return foundCount == 0 ? 0.0 : static_cast<double>(stripeEndCount) / foundCount;
}

void addSeamRunOptions(CLI::App& command, TSeamRunOptions& options) {
  addTrackingOptions(command, options.tracking);
  command.add_option("--truth", options.truthFile, "CSV table of true seams: file,x,y,point,source,tol_px");
  command.add_option("--point", options.truthPoint,
                     "The labelled point that is the seam, where there are several");
}

TTruth truthOf(const TSeamRunOptions& options) {
  if (options.truthFile.empty() && !options.truthPoint.empty()) {
    throw usageError("--point needs --truth");
  }
  return options.truthFile.empty() ? TTruth() : TTruth(options.truthFile, options.truthPoint);
}

TFrame prepared(TFrame frame, const TPreparation& preparation) {
  if (frame.problem.empty()) {
    frame.image = prepareImage(frame.image, preparation, frame.name);
  }
  return frame;
}

std::optional<cv::Point2d> storedSeam(const TSeamFrame& seen, const TFrame& frame,
                                      const TPreparation& preparation) {
  return seen.seam ? std::make_optional(toStored(*seen.seam, preparation, frame.storedSize)) : std::nullopt;
}

TReading followFrames(const TFrameOptions& options, const std::function<void(const TFrame&)>& follow) {
  TFrameSource source = framesOf(options);
  TProgress progress(source.frameCount());
  for (int done = 1; const auto frame = source.next(); ++done) {
    follow(*frame);
    progress.draw(done);
  }
  progress.clear();
  throwIfStopRequested();
  return source.reading();
}

}  // namespace tool
