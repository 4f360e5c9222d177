#include "support/fit_points.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>

namespace zelFit {

namespace {

constexpr int kFarPx = 1 << 16;     // beyond every image
constexpr float kPaddingY = 1e15F;  // far from every line: no weight, a constant in every score

bool isNear(cv::Point p) {
  return p.x >= -kFarPx && p.x <= kFarPx && p.y >= -kFarPx && p.y <= kFarPx;
}

}  // namespace

struct TFitPoints::TExtent {
  int left = std::numeric_limits<int>::max();
  int right = std::numeric_limits<int>::min();
  int top = std::numeric_limits<int>::max();
  int bottom = std::numeric_limits<int>::min();

  explicit TExtent(weld::TIntPointView points) {
    for (const cv::Point p : points) {
      left = std::min(left, p.x);
      right = std::max(right, p.x);
      top = std::min(top, p.y);
      bottom = std::max(bottom, p.y);
    }
  }
  bool isNear() const { return left >= -kFarPx && right <= kFarPx && top >= -kFarPx && bottom <= kFarPx; }
};

TFitPoints::TFitPoints(weld::TIntPointView points, weld::TMemory* memory) : coordinates(memory) {
  const TExtent extent(points);
  if (extent.isNear()) {
    scale(points, extent);
    return;
  }
  weld::TList<cv::Point> near(memory);
  near.reserve(points.size());
  std::copy_if(points.begin(), points.end(), std::back_inserter(near), isNear);
  scale(near, TExtent(near));
}

void TFitPoints::scale(weld::TIntPointView points, const TExtent& extent) {
  if (extent.left >= extent.right) return;
  centreX = 0.5 * (extent.left + extent.right);
  centreY = 0.5 * (extent.top + extent.bottom);
  scaleX = 0.5 * (extent.right - extent.left);
  resize(static_cast<int>(points.size()));
  const auto middleX = static_cast<float>(centreX);
  const auto middleY = static_cast<float>(centreY);
  const float factor = perScale();
  float* const xs = coordinates.data();
  float* const ys = xs + stride(pointCount);
  for (std::size_t i = 0; i < points.size(); ++i) {
    xs[i] = (static_cast<float>(points[i].x) - middleX) * factor;
    ys[i] = static_cast<float>(points[i].y) - middleY;
  }
}

TFitPoints TFitPoints::subsample(int maxCount) const {
  const int count = std::min(maxCount, pointCount);
  TFitPoints part(coordinates.get_allocator().resource());
  part.centreX = centreX;
  part.centreY = centreY;
  part.scaleX = scaleX;
  part.resize(count);
  float* const xs = part.coordinates.data();
  float* const ys = xs + stride(count);
  for (int i = 0; i < count; ++i) {
    const auto from = static_cast<std::int64_t>(i) * (pointCount - 1) / (count - 1);
    xs[i] = x()[from];
    ys[i] = y()[from];
  }
  return part;
}

// The points are for the caller to fill.
void TFitPoints::resize(int count) {
  pointCount = count;
  const auto padded = static_cast<std::size_t>(stride(count));
  coordinates.resize(2 * padded);
  float* const xs = coordinates.data();
  std::fill(xs + count, xs + padded, 0.0F);
  std::fill(xs + padded + count, xs + 2 * padded, kPaddingY);
}

}  // namespace zelFit
