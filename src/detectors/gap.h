// Butt gap: one straight stripe broken by a gap.
#pragma once

#include "detectors/detector_object.h"

#include <opencv2/core.hpp>

namespace weld {

// The widest interruption along the one line through the stripe. Not found: isFound false with the stripe
// points of the frame.
TWeldLineRes detectGapSeam(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                           const cv::Mat& searchMask);

}  // namespace weld
