// One timed call of the library.
#pragma once

#include "zelWeldDetect.h"

#include <chrono>

namespace tool {

struct TTimedResult {
  TWeldLineRes result;
  double ms = 0.0;
};

inline TTimedResult detectTimed(const cv::Mat& image, TWeldParams& params, const TWeldLineRes& previous) {
  using TClock = std::chrono::steady_clock;
  const auto start = TClock::now();
  TWeldLineRes result = detectWeldLineViaTracking(image, params, previous);
  const std::chrono::duration<double, std::milli> elapsed = TClock::now() - start;
  return {std::move(result), elapsed.count()};
}

}  // namespace tool
