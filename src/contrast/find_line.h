// The seam in an image without a stripe.
#pragma once

#include "contrast/confidence.h"
#include "zelContrast.h"

#include <opencv2/core.hpp>

namespace weld {

// The surest line of an image, sure enough or not; no points where nothing looks like a line.
struct TFoundLine {
  TContourCenterLine line;
  TLineFeatures features{};
  TTrait trait = TTrait::dark;
};

// Replaces what is out of range by the defaults.
TContrastSearch inRange(const TContrastSearch& search);

// What a whole search needs, so that a second one finds its memory there.
std::size_t contrastBytes(cv::Size imageSize);

//   grey    8-bit, one channel.
//   search  in range.
TFoundLine findLine(const cv::Mat& grey, const TContrastSearch& search, TMemory* memory);

// Whether a line is what was asked for: sure, wide and long enough, in the right direction.
bool isWanted(const TFoundLine& found, const TContrastSearch& search);

}  // namespace weld
