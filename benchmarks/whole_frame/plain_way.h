// A gap detection the plain way: deep copy, display image, and per region a transposed image, an integral image
// and edge lists per column. The lines are fitted as the library does.
#pragma once

#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

namespace bench {

TWeldLineRes detectGapPlainly(const cv::Mat& image, const TWeldParams& params, const TWeldLineRes& previous);

}  // namespace bench
