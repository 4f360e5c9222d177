// One timed frame of a tracker.
#pragma once

#include "zelWeldDetect.h"

#include <chrono>

namespace tool {

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

struct TTimedSeam {
  TTrackedSeam seam;
  double ms = 0.0;
};

inline TTimedSeam trackTimed(TWeldTracker& tracker, const cv::Mat& image) {
  using TClock = std::chrono::steady_clock;
  const auto start = TClock::now();
  TTrackedSeam seam = tracker.track(image);
  const std::chrono::duration<double, std::milli> elapsed = TClock::now() - start;
  return {std::move(seam), elapsed.count()};
}

}  // namespace tool
