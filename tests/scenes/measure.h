// What a rendered frame shows, measured from its pixels alone.
#pragma once

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cmath>
#include <cstdint>
#include <string>

#include "scenes/scene.h"
#include "support/seed.h"

namespace measure {

inline constexpr scenes::TJoint kAllJoints[] = {
    scenes::TJoint::buttGap,    scenes::TJoint::lap,         scenes::TJoint::corner,  scenes::TJoint::plate,
    scenes::TJoint::vGroove,    scenes::TJoint::singleBevel, scenes::TJoint::uGroove, scenes::TJoint::flareV,
    scenes::TJoint::flareBevel, scenes::TJoint::plain,       scenes::TJoint::blank};

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

// Rows between the two crossings of half the column's maximum, interpolated.
inline double heightAtHalf(const cv::Mat& image, int x) {
  double brightest = 0.0;
  cv::minMaxLoc(image.col(x), nullptr, &brightest);
  const double half = brightest / 2.0;
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

inline std::uint64_t checksum(const cv::Mat& image) {
  const cv::Mat1b greys(image);
  return testing_support::seedOf({greys.begin(), greys.end()});
}

inline cv::Point2d feature(const scenes::TTruth& truth, const std::string& name) {
  for (const scenes::TFeature& f : truth.features) {
    if (f.name == name) return f.point;
  }
  ADD_FAILURE() << "no feature " << name;
  return {};
}

// The first lit column from there on, in steps of 1 or -1; the stripe must be visible there.
inline int firstLit(const scenes::TTruth& truth, int from, int step) {
  while (std::isnan(truth.centreY.at(static_cast<std::size_t>(from)))) from += step;
  return from;
}

}  // namespace measure
