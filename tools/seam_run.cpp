#include "tools/seam_run.h"

#include "tools/cli_error.h"
#include "tools/progress.h"
#include "tools/stats.h"
#include "tools/stop_signal.h"
#include "tools/text.h"
#include "tools/trace_json.h"

#include <CLI/CLI.hpp>

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

// What would have found the frame, where anything would.
std::vector<TTraceNeed> needsOf(const TFrameTrace& trace) {
  const auto suffices = [](const TTraceAttempt& attempt) { return attempt.needsSuffice; };
  const auto attempt = std::find_if(trace.attempts.begin(), trace.attempts.end(), suffices);
  return attempt == trace.attempts.end() ? std::vector<TTraceNeed>() : attempt->needs;
}

}  // namespace

TSeamRun::TSeamRun(const TTracking& tracking, std::optional<TMeasure> steadied, std::string swept)
    : how(traced(tracking)),
      tracker(makeWeldTracker(how)),
      objective(std::move(steadied)),
      parameter(std::move(swept)),
      measures(measuresOf(how.params.weldType)),
      measured(measures.size()) {}

TSeamFrame TSeamRun::next(const TFrame& frame) {
  if (frame.startsSequence || how.isFirstOnly) {
    tracker.reset();
  }
  lastSeam = tracker.track(frame.image);
  const TSeamFrame seen = seenIn(frame);
  measure(lastSeam);
  add(frame.index, frame.startsSequence, seen);
  return seen;
}

TSeamFrame TSeamRun::seenIn(const TFrame& frame) const {
  const TFrameTrace& trace = tracker.lastTrace();
  TSeamFrame seen;
  seen.isFound = lastSeam.state == TSeamState::found;
  seen.seam = seen.isFound ? seamOf(how.params, lastSeam) : std::nullopt;
  if (seen.seam) {
    seen.storedSeam = toStored(*seen.seam, how.preparation, frame.storedSize);
  }
  seen.steady = steadyPlace(objective, lastSeam, seen.seam);
  seen.reason = trace.reason;
  seen.sentence = frame.problem.empty() ? explanationOf(trace) : onOneLine(frame.problem);
  seen.confidence = static_cast<double>(lastSeam.measurement.confidence);
  seen.isAtStripeEnd = seen.seam && isAtStripeEnd(how.params.weldType, lastSeam);
  seen.limit = parameter.empty() ? std::nullopt : limitOf(parameter);
  seen.needs = seen.isFound ? std::vector<TTraceNeed>() : needsOf(trace);
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

std::optional<TLimitKind> TSeamRun::limitOf(const std::string& name) const {
  for (const TTraceAttempt& attempt : tracker.lastTrace().attempts) {
    for (const TTraceCheck& check : attempt.checks) {
      if (name == check.parameter) {
        return check.kind;
      }
    }
  }
  return std::nullopt;
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
