// Sub-pixel measurement of the stripe in one column. Internal to the ridge extraction.
#pragma once

#include "stripe/ridge.h"

#include <opencv2/core.hpp>

#include <optional>

namespace weld {

// Where the path expects the stripe in a column.
struct TRidgeGuess {
  int x = 0;
  double y = 0.0;
  double widthPx = 0.0;
};

// Measures the stripe near the guess on the raw grey levels of column x: half-height extent, contrast over
// the brighter side, and the centre. None when the contrast is below leastContrast (grey levels).
// Confidence is left at 0.
std::optional<TRidgePoint> refineRidgePoint(const cv::Mat& grey, const TRidgeGuess& guess, double leastContrast);

}  // namespace weld
