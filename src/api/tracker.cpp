#include "zelWeldTracker.h"

#include "api/dispatch.h"
#include "support/image_test.h"
#include "support/trace.h"
#include "support/trace_conclusion.h"

#include <utility>

struct TWeldTracker::TState {
  TTrackerOptions options;
  weld::TPlateDetector object;
  TWeldLineRes previous;
  TFrameTrace trace;
  bool isHeld = false;
};

TWeldTracker::TWeldTracker(const TWeldParams& params, const TTrackerOptions& options)
    : state(std::make_unique<TState>()) {
  state->options = options;
  state->object.setWeldParameters(params);
}

TWeldTracker::TWeldTracker(TWeldTracker&& other) noexcept = default;
TWeldTracker& TWeldTracker::operator=(TWeldTracker&& other) noexcept = default;
TWeldTracker::~TWeldTracker() = default;

TWeldLineRes TWeldTracker::track(const cv::Mat& image) {
  TFrameTrace trace;
  state->object.trace = state->options.withTrace ? weld::TTrace(trace) : weld::TTrace();
  const weld::TTraceClock clock(state->object.trace);
  TWeldLineRes result;
  if (weld::hasPixels(image)) result = weld::detectSeam(state->object, image, state->previous);
  if (state->object.trace) {
    weld::concludeFrame(trace, weld::hasPixels(image));
    trace.totalUs = clock.elapsedUs();
    state->trace = std::move(trace);
    state->object.trace = {};
  }
  state->previous = result;
  return result;
}

bool TWeldTracker::isHeld() const {
  return state->isHeld;
}

void TWeldTracker::reset() {
  state->previous = {};
  state->isHeld = false;
}

void TWeldTracker::setParams(const TWeldParams& params) {
  state->object.setWeldParameters(params);
}

const TFrameTrace& TWeldTracker::lastTrace() const {
  return state->trace;
}
