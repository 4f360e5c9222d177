// The two sums over an image in which reflective areas count only partly. Both give, bit for bit, what adding
// pixel after pixel, row after row, gives.
#pragma once

#include <opencv2/core.hpp>

#include <cstdint>

namespace weld {

// Sum of the grey levels in every second row and column; 0.3 times the grey level (a single-precision product)
// where the mask is 0. Image and mask: 8-bit, one channel, the same size.
double sumSampledGrey(const cv::Mat& grey, const cv::Mat& mask);

// Sum of 1 for each pixel with low <= grey level <= high where the mask is 255, of 0.2 elsewhere, in single
// precision: above 2^22 it no longer grows by 0.2, above 2^24 not at all. Image and mask as above.
float sumRangeWeights(const cv::Mat& grey, const cv::Mat& mask, std::uint8_t low, std::uint8_t high);

}  // namespace weld
