// Frames, parameters and previous results of any kind through the per-frame entry point, the tracker, and what
// measures and recognises joints.
#include "fuzz/input.h"
#include "fuzz/verdict.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using fuzz::require;

constexpr int kMaxPreviousPoints = 20000;

bool isInside(const cv::Mat& image, cv::Point2f p) {
  return p.x >= 0.0F && p.y >= 0.0F && p.x < static_cast<float>(image.cols) &&
         p.y < static_cast<float>(image.rows);
}

void checkResult(const TWeldLineRes& result, const cv::Mat& image) {
  require(std::isfinite(result.weldPos.x) && std::isfinite(result.weldPos.y), "a finite seam point");
  require(result.isFound || result.weldPos == cv::Point2f(), "no seam point without a seam");
  const auto& points = result.stripePts;
  require(std::all_of(points.begin(), points.end(), [&](cv::Point2f p) { return isInside(image, p); }),
          "stripe points inside the image");
}

bool isSame(const TWeldLineRes& a, const TWeldLineRes& b) {
  return a.isFound == b.isFound && a.weldPos == b.weldPos && a.stripePts == b.stripePts;
}

// Detects a second time where asked to: the same input must give the same result and an untouched image.
TWeldLineRes detect(const cv::Mat& image, TWeldParams& params, const TWeldLineRes& previous, bool isChecked) {
  const TWeldLineRes result = detectWeldLineViaTracking(image, params, previous);
  checkResult(result, image);
  if (!isChecked) return result;
  const cv::Mat before = image.clone();
  require(isSame(result, detectWeldLineViaTracking(image, params, previous)), "one answer to one question");
  require(image.empty() || cv::norm(image, before, cv::NORM_INF) == 0.0, "an untouched image");
  return result;
}

// One frame after the other; most often the same image again, with the same parameters.
template <typename TOnFrame>
void forEachFrame(fuzz::TInput& input, TWeldParams params, TOnFrame onFrame) {
  fuzz::TFrame frame = fuzz::takeFrame(input);
  const int frames = 1 + input.takeBelow(fuzz::kMaxFrames);
  for (int i = 0; i < frames; ++i) {
    if (i > 0 && input.takeFlag()) frame = fuzz::takeFrame(input);
    if (i > 0 && input.takeFlag()) params = fuzz::takeParams(input);
    const bool mayThrow = !frame.image.empty() && !fuzz::isReadable(frame.image);
    fuzz::runCall(mayThrow, [&] { onFrame(frame.image, params); });
  }
}

// Any previous result before the first frame, then each result fed back.
void runEntryPoint(fuzz::TInput& input) {
  const TWeldParams params = fuzz::takeParams(input);
  TWeldLineRes previous = fuzz::takeResult(input, kMaxPreviousPoints);
  const bool isChecked = input.takeFlag();
  forEachFrame(input, params, [&](const cv::Mat& image, TWeldParams& current) {
    previous = detect(image, current, previous, isChecked);
  });
}

// A tracker without policies does what the entry point does.
void compareTracker(fuzz::TInput& input) {
  const TWeldParams params = fuzz::takeParams(input);
  TWeldTracker tracker(params, TTrackerOptions::exact());
  TWeldLineRes previous;
  forEachFrame(input, params, [&](const cv::Mat& image, TWeldParams& current) {
    tracker.setParams(current);
    const TWeldLineRes expected = detect(image, current, previous, false);
    require(isSame(tracker.track(image).line, expected), "a tracker that repeats the entry point");
    previous = expected;
  });
}

TTrackerOptions takeOptions(fuzz::TInput& input) {
  TTrackerOptions options;
  options.guideMarginPx = input.takeInt();
  options.extraction = static_cast<TStripeExtraction>(input.takeFlag() ? input.takeBelow(3) : input.takeInt());
  options.rejectImpossiblePoints = input.takeFlag();
  options.maxJumpPx = input.takeDouble();
  options.acceptAfterFrames = input.takeInt();
  options.holdFrames = input.takeInt();
  options.searchWholeOnLoss = input.takeFlag();
  options.keepTrace = input.takeFlag();
  return options;
}

void checkTrace(const TFrameTrace& trace) {
  require(trace.decisive >= -1 && trace.decisive < static_cast<int>(trace.attempts.size()), "a decisive attempt");
}

void runTracker(fuzz::TInput& input) {
  const TWeldParams params = fuzz::takeParams(input);
  const TTrackerOptions options = takeOptions(input);
  TWeldTracker tracker(params, options);
  forEachFrame(input, params, [&](const cv::Mat& image, TWeldParams& current) {
    if (input.takeFlag()) tracker.setParams(current);
    if (input.takeFlag()) tracker.reset();
    const TTrackedSeam seam = tracker.track(image);
    checkResult(seam.line, image);
    require(seam.line.isFound == (seam.state == TSeamState::found), "a state that fits the result");
    checkTrace(tracker.lastTrace());
  });
}

void checkMeasurement(const TJointMeasurement& m) {
  require(m.isValid || m.points.empty(), "no points without a measurement");
  require(m.confidence >= 0.0F && m.confidence <= 1.0F, "a confidence between 0 and 1");
  for (const TFeaturePoint& p : m.points)
    require(std::isfinite(p.pos.x) && std::isfinite(p.pos.y) && p.sigmaPx >= 0.0F, "points with a spread");
}

// Any result and the frame's own, measured as any joint.
void runMeasuring(fuzz::TInput& input) {
  const TWeldParams params = fuzz::takeParams(input);
  TWeldLineRes result = fuzz::takeResult(input, kMaxPreviousPoints);
  checkMeasurement(measureJoint(result, params));
  const bool isFedBack = input.takeFlag();
  forEachFrame(input, params, [&](const cv::Mat& image, TWeldParams& current) {
    result = detectWeldLineViaTracking(image, current, isFedBack ? result : TWeldLineRes());
    checkMeasurement(measureJoint(result, current));
    double most = std::numeric_limits<double>::infinity();
    for (const TJointCandidate& candidate : recogniseJoint(image)) {
      require(candidate.score > 0.0 && candidate.score <= most, "candidates by falling score");
      most = candidate.score;
    }
  });
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  fuzz::quietOpenCv();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::TInput input(data, size);
  constexpr void (*kWays[fuzz::kWays])(fuzz::TInput&) = {runEntryPoint, compareTracker, runTracker, runMeasuring};
  kWays[input.takeBelow(fuzz::kWays)](input);
  return 0;
}
