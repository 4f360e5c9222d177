// Frames through the library, scored against the truth.
#pragma once

#include "scenes/scene.h"
#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace scenario {

// As large as the joints of random scenes need, and no larger: most of the time goes into drawing.
const cv::Size kFrameSize{1280, 1024};

// Frames seen, and how far off the seam was where one was found.
struct TScore {
  int frames = 0;
  std::vector<double> errorsPx;

  void add(scenes::TJoint joint, TWeldPosType pos, const scenes::TScene& scene, const TWeldLineRes& result) {
    ++frames;
    if (!result.isFound) return;
    const cv::Point2d error = cv::Point2d(result.weldPos) - scenes::seamPoint(joint, scene.truth, pos);
    errorsPx.push_back(std::hypot(error.x, error.y));
  }

  double foundShare() const { return static_cast<double>(errorsPx.size()) / frames; }

  // Error that this share of the found frames stays below; infinite when none was found.
  double errorAt(double share) const {
    if (errorsPx.empty()) return HUGE_VAL;
    std::vector<double> sorted = errorsPx;
    std::sort(sorted.begin(), sorted.end());
    return sorted[std::min(static_cast<std::size_t>(share * static_cast<double>(sorted.size())),
                           sorted.size() - 1)];
  }
};

inline TWeldLineRes detect(const TWeldParams& params, const cv::Mat& image, const TWeldLineRes& prevRes = {}) {
  TWeldParams own = params;
  return detectWeldLineViaTracking(image, own, prevRes);
}

inline const char* nameOf(scenes::TJoint joint) {
  return findWeldJoint(scenes::weldParamsFor(joint).weldType)->shortName;
}

inline const char* nameOf(scenes::TLevel level) {
  switch (level) {
    case scenes::TLevel::clean:
      return "clean";
    case scenes::TLevel::noisy:
      return "noisy";
    default:
      return "harsh";
  }
}

}  // namespace scenario
