// What every image must have before it is read.
#pragma once

#include <opencv2/core.hpp>

namespace weld {

// True when the matrix has data, dimensions and elements.
inline bool hasPixels(const cv::Mat& image) {
  return image.data != nullptr && image.dims != 0 && image.total() != 0;
}

}  // namespace weld
