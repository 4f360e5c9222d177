#include "zelWeldTracker.h"

#include "api/dispatch.h"
#include "api/seam_gate.h"
#include "api/seam_search.h"
#include "support/image_test.h"
#include "support/trace.h"
#include "support/trace_conclusion.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace {

// A limit of jumps that is not a number sets none.
TTrackerOptions inRange(TTrackerOptions options) {
  constexpr double kLeastJumpPx = std::numeric_limits<double>::min();
  constexpr double kNever = std::numeric_limits<double>::infinity();
  options.guideMarginPx = std::max(options.guideMarginPx, 0);
  options.extraction = std::clamp(options.extraction, TStripeExtraction::edgePairs, TStripeExtraction::automatic);
  options.maxJumpPx = std::isnan(options.maxJumpPx) ? kNever : std::max(options.maxJumpPx, kLeastJumpPx);
  options.acceptAfterFrames = std::max(options.acceptAfterFrames, 1);
  options.holdFrames = std::max(options.holdFrames, 0);
  return options;
}

}  // namespace

struct TWeldTracker::TState {
  TTrackerOptions options;
  weld::TPlateDetector detector;

  // What a frame leaves to the next one.
  weld::TFoundSeam last;  // the last good seam as long as it is held, else the last result
  weld::TJumpMemory jumps;
  int heldFrames = 0;  // that repeated the last good seam
  TFrameTrace trace;

  // Working memory.
  weld::TFoundSeam spare;
  std::vector<cv::Point2f> guide;

  bool hasSeamPoint() const { return detector.getWeldParameters().weldType != TWeldType::stripePresence; }
  bool canHold() const { return hasSeamPoint() && last.line.isFound && heldFrames < options.holdFrames; }
  weld::TFoundSeam search(const cv::Mat& image);
  void applyGate(TWeldLineRes& line, weld::TJumpMemory& jumpsAfter) const;
  void concludeTrace(const weld::TTraceClock& clock, bool hasImage, bool isHeld) const;
};

// A held seam guides the search like a new one, unless a lost frame's search is left to the next frame.
weld::TFoundSeam TWeldTracker::TState::search(const cv::Mat& image) {
  if (!weld::hasPixels(image)) return {};
  if (image.dims == 2) detector.scratch.reserveFor(image, options.extraction != TStripeExtraction::edgePairs);
  const bool guides = heldFrames == 0 || options.searchesWholeOnLoss;
  const weld::TFoundSeam none;
  return weld::searchSeam(detector, image, guides ? last : none, heldFrames > 0, options, guide);
}

// A seam that is held back counts as not found.
void TWeldTracker::TState::applyGate(TWeldLineRes& line, weld::TJumpMemory& jumpsAfter) const {
  if (!line.isFound) jumpsAfter.pendingFrames = 0;
  if (!line.isFound || !hasSeamPoint()) return;
  if (weld::passesJumpTest(line.weldPos, options, jumpsAfter, detector.trace.atGate())) return;
  line = weld::withoutSeam(std::move(line));
}

void TWeldTracker::TState::concludeTrace(const weld::TTraceClock& clock, bool hasImage, bool isHeld) const {
  if (!detector.trace) return;
  TFrameTrace& record = detector.trace.record();
  weld::concludeFrame(record, hasImage, isHeld ? std::optional(last.line.weldPos) : std::nullopt);
  record.totalUs = clock.elapsedUs();
}

TWeldTracker::TWeldTracker(const TWeldParams& params, const TTrackerOptions& options)
    : state(std::make_unique<TState>()) {
  state->options = inRange(options);
  state->detector.setWeldParameters(params);
}

TWeldTracker::TWeldTracker(TWeldTracker&& other) noexcept = default;
TWeldTracker& TWeldTracker::operator=(TWeldTracker&& other) noexcept = default;
TWeldTracker::~TWeldTracker() = default;

TWeldLineRes TWeldTracker::track(const cv::Mat& image) {
  TFrameTrace trace;
  state->detector.trace = state->options.withTrace ? weld::TTrace(trace) : weld::TTrace();
  const weld::TTraceClock clock(state->detector.trace);

  weld::TFoundSeam seam = state->search(image);
  weld::TJumpMemory jumps = state->jumps;
  state->applyGate(seam.line, jumps);
  const bool isHeld = !seam.line.isFound && state->canHold();
  // A copy, so that the working memory keeps the list that the stripe points came in.
  TWeldLineRes result = isHeld ? state->last.line : seam.line;
  state->spare.line.stripePts.reserve(static_cast<std::size_t>(std::max(image.cols, 0)));  // the most there can be
  state->spare = seam;
  state->concludeTrace(clock, weld::hasPixels(image), isHeld);
  weld::announceSeam(state->detector, seam.line, seam.stripe.widthPx);

  // Nothing below throws, so that an exception leaves everything as it was.
  state->detector.trace = {};
  std::swap(state->trace, trace);
  state->jumps = jumps;
  state->heldFrames = isHeld ? state->heldFrames + 1 : 0;
  if (!isHeld) std::swap(state->last, state->spare);
  state->detector.scratch.give(seam.line.stripePts);
  return result;
}

bool TWeldTracker::isHeld() const {
  return state->heldFrames > 0;
}

void TWeldTracker::reset() {
  state->last = {};
  state->jumps = {};
  state->heldFrames = 0;
  state->trace = {};
  state->detector.plateInfoFrameCounter = 0;
}

void TWeldTracker::setParams(const TWeldParams& params) {
  state->detector.setWeldParameters(params);
}

const TFrameTrace& TWeldTracker::lastTrace() const {
  return state->trace;
}
