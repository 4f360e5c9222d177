// The choice of the detector.
#pragma once

#include "detectors/plate.h"

#include <opencv2/core.hpp>

namespace weld {

// Runs the detector of the object's joint. A joint without a detector gives the empty result. The image must have
// pixels. The object may live over several frames.
TWeldLineRes detectSeam(TPlateDetector& object, const cv::Mat& image, const TWeldLineRes& prevRes);

// Tells the host about the seam that a frame is reported with, once per frame.
void announceSeam(TPlateDetector& object, const TWeldLineRes& result, double stripeWidthPx);

}  // namespace weld
