// Stripe presence: no seam point, only whether the stripe is there.
#pragma once

#include "detectors/detector_object.h"

#include <opencv2/core.hpp>

namespace weld {

// The stripe points of the frame, and isFound from comparing their number n with the previous number m: false
// when n is 0, m is 0 or 2n <= m < 3n, true otherwise.
TWeldLineRes checkStripePresence(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                                 const cv::Mat& searchMask);

}  // namespace weld
