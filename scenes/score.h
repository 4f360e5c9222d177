// How often something was found, and how far off it was.
#pragma once

#include "scenes/joints.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace scenes {

// Value below which that share of the values lies; infinite without values.
inline double quantile(std::vector<double> values, double share) {
  if (values.empty()) return std::numeric_limits<double>::infinity();
  std::sort(values.begin(), values.end());
  const auto index = static_cast<std::size_t>(share * static_cast<double>(values.size()));
  return values[std::min(index, values.size() - 1)];
}

struct TScore {
  int frames = 0;  // looked at; where the stripe itself is scored, its columns
  int found = 0;
  std::vector<double> errorsPx;  // of those found, where there is a truth

  void addMiss() { ++frames; }
  void addFound(double errorPx) {
    ++frames;
    ++found;
    errorsPx.push_back(errorPx);
  }
  // What a frame gave, against its true seam.
  void add(const TSeamCase& seamCase, const TTruth& truth, const TWeldLineRes& result) {
    if (!result.isFound) return addMiss();
    const cv::Point2d error = cv::Point2d(result.weldPos) - seamPoint(seamCase.joint, truth, seamCase.pos);
    addFound(std::hypot(error.x, error.y));
  }
  void add(const TScore& other) {
    frames += other.frames;
    found += other.found;
    errorsPx.insert(errorsPx.end(), other.errorsPx.begin(), other.errorsPx.end());
  }

  double foundShare() const { return frames > 0 ? static_cast<double>(found) / frames : 0.0; }
  double errorAt(double share) const { return quantile(errorsPx, share); }
};

}  // namespace scenes
