// The exposure figures computed the obvious way, pixel after pixel: the oracle of the fast path.
#pragma once

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdint>

namespace plain {

inline cv::Mat notReflective(const cv::Mat& grey, int size) {
  cv::Mat mask;
  cv::threshold(grey, mask, 240.0, 255.0, cv::THRESH_BINARY);
  const cv::Mat kernel = cv::getStructuringElement(cv::MORPH_RECT, {size, size}, {-1, -1});
  cv::morphologyEx(mask, mask, cv::MORPH_OPEN, kernel, {-1, -1}, 1, cv::BORDER_CONSTANT,
                   cv::morphologyDefaultBorderValue());
  return 255 - mask;
}

inline double sampledSum(const cv::Mat& grey, const cv::Mat& mask) {
  double sum = 0.0;
  for (int y = 0; y < grey.rows; y += 2) {
    for (int x = 0; x < grey.cols; x += 2) {
      const std::uint8_t level = grey.at<std::uint8_t>(y, x);
      if (mask.at<std::uint8_t>(y, x) != 0) {
        sum += level;
      } else {
        const float reduced = static_cast<float>(level) * 0.3F;
        sum += reduced;
      }
    }
  }
  return sum;
}

inline float rangeWeights(const cv::Mat& grey, const cv::Mat& mask, int low, int high) {
  float sum = 0.0F;
  for (int y = 0; y < grey.rows; ++y) {
    for (int x = 0; x < grey.cols; ++x) {
      const int level = grey.at<std::uint8_t>(y, x);
      if (level <= low || level >= high) continue;
      sum += mask.at<std::uint8_t>(y, x) == 255 ? 1.0F : 0.2F;
    }
  }
  return sum;
}

}  // namespace plain
