// What a rendered frame shows, measured from its pixels alone.
#pragma once

#include <opencv2/core.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "scenes/scene.h"

namespace measure {

inline constexpr scenes::TJoint kAllJoints[] = {
    scenes::TJoint::buttGap,    scenes::TJoint::lap,         scenes::TJoint::corner,  scenes::TJoint::plate,
    scenes::TJoint::vGroove,    scenes::TJoint::singleBevel, scenes::TJoint::uGroove, scenes::TJoint::flareV,
    scenes::TJoint::flareBevel, scenes::TJoint::plain,       scenes::TJoint::blank};

struct TSpread {
  double mean = 0.0;
  double sigma = 0.0;
};

inline TSpread spreadOf(const cv::Mat& pixels) {
  const cv::Mat1b image = pixels;
  double sum = 0.0;
  double squares = 0.0;
  for (const std::uint8_t v : image) {
    sum += v;
    squares += static_cast<double>(v) * v;
  }
  const auto count = static_cast<double>(image.total());
  const double mean = sum / count;
  return {mean, std::sqrt(squares / count - mean * mean)};
}

// Centroid of a whole column; NaN for a dark one.
inline double centroid(const cv::Mat& image, int x) {
  double weighted = 0.0;
  double sum = 0.0;
  for (int y = 0; y < image.rows; ++y) {
    weighted += static_cast<double>(y) * image.at<std::uint8_t>(y, x);
    sum += image.at<std::uint8_t>(y, x);
  }
  return weighted / sum;
}

inline int brightest(const cv::Mat& image, int x) {
  int best = 0;
  for (int y = 0; y < image.rows; ++y) best = std::max<int>(best, image.at<std::uint8_t>(y, x));
  return best;
}

// Rows between the two crossings of half the column's maximum, interpolated.
inline double heightAtHalf(const cv::Mat& image, int x) {
  const double half = brightest(image, x) / 2.0;
  double first = -1.0;
  double last = -1.0;
  for (int y = 1; y < image.rows; ++y) {
    const double before = image.at<std::uint8_t>(y - 1, x);
    const double here = image.at<std::uint8_t>(y, x);
    if ((before < half) == (here < half)) continue;
    last = y - 1 + (half - before) / (here - before);
    if (first < 0.0) first = last;
  }
  return last - first;
}

// FNV-1a.
inline std::uint64_t checksum(const cv::Mat& image) {
  std::uint64_t sum = 0xCBF29CE484222325ULL;
  for (const std::uint8_t v : cv::Mat1b(image)) sum = (sum ^ v) * 0x100000001B3ULL;
  return sum;
}

inline int firstLit(const scenes::TTruth& truth, int from) {
  for (int x = from; x < static_cast<int>(truth.centreY.size()); ++x) {
    if (!std::isnan(truth.centreY[x])) return x;
  }
  return -1;
}

inline int lastLit(const scenes::TTruth& truth, int from) {
  for (int x = from; x >= 0; --x) {
    if (!std::isnan(truth.centreY[x])) return x;
  }
  return -1;
}

}  // namespace measure
