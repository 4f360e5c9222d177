#include "support/fit_points.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace zelFit {

namespace {

constexpr int kFarPx = 1 << 16;     // beyond every image
constexpr float kPaddingY = 1e15F;  // far from every line: no weight, a constant in every score

bool isNear(cv::Point p) {
  return p.x >= -kFarPx && p.x <= kFarPx && p.y >= -kFarPx && p.y <= kFarPx;
}

struct TExtent {
  int left = std::numeric_limits<int>::max();
  int right = std::numeric_limits<int>::min();
  int top = std::numeric_limits<int>::max();
  int bottom = std::numeric_limits<int>::min();
  int count = 0;
};

TExtent measureNear(const std::vector<cv::Point>& points) {
  TExtent extent;
  for (const cv::Point p : points) {
    if (!isNear(p)) continue;
    extent.left = std::min(extent.left, p.x);
    extent.right = std::max(extent.right, p.x);
    extent.top = std::min(extent.top, p.y);
    extent.bottom = std::max(extent.bottom, p.y);
    ++extent.count;
  }
  return extent;
}

}  // namespace

TFitPoints::TFitPoints(const std::vector<cv::Point>& points, weld::TScratch* scratch) {
  const TExtent extent = measureNear(points);
  if (extent.left >= extent.right) return;
  centreX = 0.5 * (extent.left + extent.right);
  centreY = 0.5 * (extent.top + extent.bottom);
  scaleX = 0.5 * (extent.right - extent.left);
  resize(extent.count, scratch);
  const auto middleX = static_cast<float>(centreX);
  const auto middleY = static_cast<float>(centreY);
  const float factor = perScale();
  int next = 0;
  for (const cv::Point p : points) {
    if (!isNear(p)) continue;
    set(next++, (static_cast<float>(p.x) - middleX) * factor, static_cast<float>(p.y) - middleY);
  }
}

TFitPoints TFitPoints::subsample(int maxCount, weld::TScratch* scratch) const {
  const int count = std::min(maxCount, pointCount);
  TFitPoints part;
  part.centreX = centreX;
  part.centreY = centreY;
  part.scaleX = scaleX;
  part.resize(count, scratch);
  for (int i = 0; i < count; ++i) {
    const auto from = static_cast<std::int64_t>(i) * (pointCount - 1) / (count - 1);
    part.set(i, x()[from], y()[from]);
  }
  return part;
}

// The points are for `set` to fill.
void TFitPoints::resize(int count, weld::TScratch* scratch) {
  pointCount = count;
  const auto padded = static_cast<std::size_t>(stride(count));
  coordinates = weld::TLentList<float>(scratch, 2 * padded);
  coordinates.resize(2 * padded);
  float* const xs = coordinates.data();
  std::fill(xs + count, xs + padded, 0.0F);
  std::fill(xs + padded + count, xs + 2 * padded, kPaddingY);
}

void TFitPoints::set(int index, float x, float y) {
  coordinates[static_cast<std::size_t>(index)] = x;
  coordinates[static_cast<std::size_t>(stride(pointCount) + index)] = y;
}

}  // namespace zelFit
