// Annotated frames for people to look at.
#pragma once

#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <optional>
#include <string>
#include <vector>

namespace tool {

// What is drawn over an image, in its pixels.
struct TOverlay {
  TWeldLineRes result;
  std::vector<cv::Point2f> guidePts;    // stripe of the frame before where the search was near it, else empty
  float searchBandPx = 0.0F;            // half height of that search band
  std::optional<cv::Point2d> seam;      // seam point found
  std::optional<cv::Point2d> trueSeam;  // where it truly is
};

// What the detector of params' joint searched, given the previous result, and what it found.
TOverlay overlayOf(const TWeldParams& params, const TWeldLineRes& previous, const TWeldLineRes& result);

// The seam point of a result; none when it was not found or the joint has no seam point.
std::optional<cv::Point2d> seamOf(const TWeldParams& params, const TWeldLineRes& result);

// A colour copy of the image with the search band, the stripe centres and the seam points in it.
cv::Mat drawOverlay(const cv::Mat& image, const TOverlay& overlay);

// Writes lines into the upper left corner: white, the first one green where found, red where not.
void drawLabel(cv::Mat& image, const std::vector<std::string>& lines, bool isFound);

// The same overlay for an image shrunk by this factor.
TOverlay scaled(TOverlay overlay, float factor);

}  // namespace tool
