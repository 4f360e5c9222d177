// The exposure figures of a frame, and what to do about them.
#pragma once

#include "zelWeldDetect.h"

namespace tool {

struct TExposure {
  int meanGray = 0;
  int brightPixelNum = 0;
  LightingAdaptation::TStripeLight light;  // no column where no stripe is found
  double factor = 1.0;                     // to multiply the exposure with
};

// By the stripe, as a tracker sees it whatever the joint; without one by the mean.
//   image  8-bit, 1 or 3 channels, not empty
TExposure exposureOf(const cv::Mat& image, const LightingAdaptation::TExposureTarget& target,
                     const LightingAdaptation::TStripeTarget& stripe);

}  // namespace tool
