// One timed frame of a tracker.
#pragma once

#include "zelWeldDetect.h"

#include <chrono>

namespace tool {

enum class TSeamState {
  found,
  held,  // not found; the last good seam is repeated
  lost
};

// "found", "held", "lost".
inline const char* nameOf(TSeamState state) {
  switch (state) {
    case TSeamState::found:
      return "found";
    case TSeamState::held:
      return "held";
    case TSeamState::lost:
      break;
  }
  return "lost";
}

struct TTimedResult {
  TWeldLineRes result;
  TSeamState state = TSeamState::lost;
  double ms = 0.0;
};

inline TTimedResult trackTimed(TWeldTracker& tracker, const cv::Mat& image) {
  using TClock = std::chrono::steady_clock;
  const auto start = TClock::now();
  TWeldLineRes result = tracker.track(image);
  const std::chrono::duration<double, std::milli> elapsed = TClock::now() - start;
  const TSeamState seen = result.isFound ? TSeamState::found : TSeamState::lost;
  return {std::move(result), tracker.isHeld() ? TSeamState::held : seen, elapsed.count()};
}

}  // namespace tool
