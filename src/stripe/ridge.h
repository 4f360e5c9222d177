// Stripe centres from the ridge of the grey-level surface: for stripes too thin, too thick, too soft or
// too dim for edge pairs.
#pragma once

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

struct TRidgePoint {
  cv::Point2f point;        // sub-pixel centre; x is a whole column
  float widthPx = 0.0F;     // full width at half maximum
  float contrast = 0.0F;    // grey levels above the surroundings
  float confidence = 0.0F;  // 0..1
};

// One ridge centre per column along the most consistent path through the image, left to right.
//   grey         8-bit, one channel; anything else raises cv::Exception.
//   maxSigmaPx   largest expected sigma of the stripe's profile, px; plateaus wider than that are searched
//                beyond it.
//   minContrast  least contrast over the surroundings, grey levels.
// A frame without a stripe gives an empty list.
std::vector<TRidgePoint> extractRidgeCentres(const cv::Mat& grey, double maxSigmaPx, double minContrast);

}  // namespace weld
