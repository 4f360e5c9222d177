// Corner: two straight flanks that meet.
#pragma once

#include "detectors/detector_object.h"

#include <opencv2/core.hpp>

namespace weld {

// The intersection of a left and a right flank, their lines and the included angle. Falls back to ridge extraction
// when edge pairs yield no corner. Not found: isFound false with the points of the last attempt.
TWeldLineRes detectCornerSeam(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                              const cv::Mat& searchMask);

}  // namespace weld
