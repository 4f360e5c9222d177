// What every image must have before it is read, and what lies on it.
#pragma once

#include <opencv2/core.hpp>

namespace weld {

// True when the matrix has data, dimensions and elements.
inline bool hasPixels(const cv::Mat& image) {
  return image.data != nullptr && image.dims != 0 && image.total() != 0;
}

// True on the image's pixels: from the middle of the first one to the middle of the last one.
inline bool isOnPixels(cv::Size imageSize, cv::Point2f p) {
  return p.x >= 0.0F && p.y >= 0.0F && p.x <= static_cast<float>(imageSize.width - 1) &&
         p.y <= static_cast<float>(imageSize.height - 1);
}

}  // namespace weld
