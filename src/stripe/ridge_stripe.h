// Stripe centres from ridges, in the shape in which edge pairs give them.
#pragma once

#include "stripe/centres.h"
#include "stripe/ridge.h"

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

// As in extractRidgeCentres.
struct TRidgeSettings {
  double maxSigmaPx;
  double minContrast;  // grey levels
};

// Ridge centres of a part of the frame, in frame coordinates. The last part that was searched is not searched
// again until scratch.ridge.searched is reset, which a new frame must do. The list lies in the scratch memory.
//   image  as in extractStripeCentres.
//   part   inside the image, not empty.
const std::vector<TRidgePoint>& extractRidgesOf(const cv::Mat& image, const cv::Rect& part,
                                                const TRidgeSettings& settings, TStripeScratch& scratch);

// Ridge centres inside the regions; the ridge is sought in their bounding box. Every column of a region gets a
// status: centre found or edge missing. The width is the most frequent one in whole pixels.
//   image  as in extractStripeCentres.
// An empty image or no regions gives an empty result.
TStripeCentres extractRidgeStripeCentres(const cv::Mat& image, const std::vector<cv::Rect>& regions,
                                         const TRidgeSettings& settings, TStripeScratch& scratch);

}  // namespace weld
