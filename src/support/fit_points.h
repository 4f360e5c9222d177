// The points of a line fit in a form that the kernels like: centred, x scaled to -1..1, single precision, padded to
// whole vectors of four. Single precision is enough because the fits only compute corrections to a line.
#pragma once

#include <opencv2/core.hpp>

#include <optional>
#include <vector>

namespace zelFit {

// y = intercept + slope * x in the scaled coordinates of a TFitPoints.
struct TScaledLine {
  float slope = 0.0F;
  float intercept = 0.0F;
};

class TFitPoints {
public:
  // Nothing when the points have fewer than two distinct columns.
  static std::optional<TFitPoints> from(const std::vector<cv::Point>& points);

  int count() const { return pointCount; }
  int paddedCount() const { return static_cast<int>(xs.size()); }
  const float* x() const { return xs.data(); }
  const float* y() const { return ys.data(); }

  // The same line in image coordinates.
  double slopeOf(const TScaledLine& line) const { return static_cast<double>(line.slope) / scaleX; }
  double interceptOf(const TScaledLine& line) const;

  // Every n-th point so that at most maxCount remain, in the same scale.
  TFitPoints subsample(int maxCount) const;

private:
  void append(float x, float y);
  void pad();

  std::vector<float> xs;
  std::vector<float> ys;
  int pointCount = 0;
  double centreX = 0.0;
  double centreY = 0.0;
  double scaleX = 1.0;
};

}  // namespace zelFit
