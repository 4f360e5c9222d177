// Frames and previous stripes that cost as much as any: what spatter, textures and careless or hostile callers can
// bring about, and more. They need not look like a weld.
#pragma once

#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace bench {

struct TWorstFrame {
  std::string name;
  cv::Mat image;  // 8-bit grey, 1280 x 1024
};

std::vector<TWorstFrame> makeWorstFrames();

struct TWorstGuide {
  std::string name;
  std::vector<cv::Point2f> stripePts;  // empty: a first detection
};

// Previous stripes whose search regions cover the whole frame.
std::vector<TWorstGuide> makeWorstGuides();

}  // namespace bench
