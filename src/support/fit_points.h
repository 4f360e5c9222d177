// The points of a line fit in a form that the kernels like: centred, x scaled to -1..1, single precision, padded
// to whole vectors. Single precision is enough because the fits only compute corrections to a line.
#pragma once

#include "support/kernels/line_rating.h"
#include "support/list.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <cstddef>

namespace zelFit {

// y = intercept + slope * x in the scaled coordinates of a TFitPoints.
struct TScaledLine {
  float slope = 0.0F;
  float intercept = 0.0F;
};

// Every n-th point so that at most maxCount >= 2 remain, the first and the last among them.
template <typename TPoint>
weld::TList<TPoint> pickEvenly(weld::TView<TPoint> points, int maxCount, weld::TMemory* memory) {
  const auto count = std::min(points.size(), static_cast<std::size_t>(maxCount));
  weld::TList<TPoint> picked(memory);
  picked.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    picked.push_back(points[count < 2 ? 0 : i * (points.size() - 1) / (count - 1)]);
  }
  return picked;
}

class TFitPoints {
public:
  static constexpr int kLanes = 4;

  // Leaves out points more than 65536 px from the origin, which no image holds. Empty when the others have fewer
  // than two distinct columns.
  TFitPoints(weld::TIntPointView points, weld::TMemory* memory);

  bool isEmpty() const { return pointCount == 0; }
  int count() const { return pointCount; }
  int paddedCount() const { return (pointCount + kLanes - 1) / kLanes * kLanes; }
  // Readable for a batch of points from any point on.
  const float* x() const { return coordinates.data(); }
  const float* y() const { return coordinates.data() + stride(pointCount); }

  // The slope of a scaled line in image coordinates, and back.
  double slopeOf(const TScaledLine& line) const { return static_cast<double>(line.slope) / scaleX; }
  float perScale() const { return static_cast<float>(1.0 / scaleX); }
  float scaleSlope(double slope) const { return static_cast<float>(slope * scaleX); }

  // Where the line, turned to this slope about the centre of the points, meets column 0 of the image.
  double interceptOf(const TScaledLine& line, double slope) const {
    return centreY + static_cast<double>(line.intercept) - slope * centreX;
  }

  // Every n-th point so that at most maxCount remain, in the same scale.
  TFitPoints subsample(int maxCount) const;

private:
  struct TExtent;

  explicit TFitPoints(weld::TMemory* memory) : coordinates(memory) {}
  void scale(weld::TIntPointView points, const TExtent& extent);
  void resize(int count);

  // Room for a batch that begins at the last point.
  static int stride(int count) { return count + kRatedLines - 1; }

  weld::TList<float> coordinates;  // all x, then all y
  int pointCount = 0;
  double centreX = 0.0;
  double centreY = 0.0;
  double scaleX = 1.0;
};

}  // namespace zelFit
