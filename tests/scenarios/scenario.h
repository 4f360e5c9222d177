// Frames through the library, scored against the truth.
#pragma once

#include "scenes/score.h"
#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

namespace scenario {

// As large as the joints of random scenes need, and no larger: most of the time goes into drawing.
const cv::Size kFrameSize{1280, 1024};

inline TWeldLineRes detect(const TWeldParams& params, const cv::Mat& image, const TWeldLineRes& prevRes = {}) {
  TWeldParams own = params;
  return detectWeldLineViaTracking(image, own, prevRes);
}

inline const char* nameOf(scenes::TLevel level) {
  switch (level) {
    case scenes::TLevel::clean:
      return "clean";
    case scenes::TLevel::noisy:
      return "noisy";
    default:
      return "harsh";
  }
}

}  // namespace scenario
