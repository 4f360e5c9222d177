// One frame: near the previous stripe or in the whole image, on edge pairs or on ridges. The order of the
// attempts.
#pragma once

#include "detectors/plate.h"
#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

// What an attempt found, and the stripe that it found it on.
struct TFoundSeam {
  TWeldLineRes line;
  TStripeMeasure stripe;
};

// Runs the detector of the object's joint as often as the frame needs it. The seam, or what the last attempt gave.
//   previous  of the frame before; a found one guides the search.
//   isHeld    the previous seam is of an earlier frame, and the last frame found none.
//   options   in range.
//   guide     working memory.
TFoundSeam searchSeam(TPlateDetector& detector, const cv::Mat& image, const TFoundSeam& previous, bool isHeld,
                      const TTrackerOptions& options, std::vector<cv::Point2f>& guide);

}  // namespace weld
