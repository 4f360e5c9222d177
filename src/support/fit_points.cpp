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

std::optional<TFitPoints> TFitPoints::from(const std::vector<cv::Point>& points) {
  const TExtent extent = measureNear(points);
  if (extent.left >= extent.right) return std::nullopt;
  TFitPoints fit;
  fit.centreX = 0.5 * (extent.left + extent.right);
  fit.centreY = 0.5 * (extent.top + extent.bottom);
  fit.scaleX = 0.5 * (extent.right - extent.left);
  fit.resize(extent.count);
  const auto centreX = static_cast<float>(fit.centreX);
  const auto centreY = static_cast<float>(fit.centreY);
  const float perScale = fit.perScale();
  std::size_t next = 0;
  for (const cv::Point p : points) {
    if (!isNear(p)) continue;
    fit.xs[next] = (static_cast<float>(p.x) - centreX) * perScale;
    fit.ys[next] = static_cast<float>(p.y) - centreY;
    ++next;
  }
  return fit;
}

TFitPoints TFitPoints::subsample(int maxCount) const {
  if (pointCount <= maxCount) return *this;
  TFitPoints part;
  part.centreX = centreX;
  part.centreY = centreY;
  part.scaleX = scaleX;
  part.resize(maxCount);
  for (int i = 0; i < maxCount; ++i) {
    const auto from = static_cast<std::size_t>(static_cast<std::int64_t>(i) * (pointCount - 1) / (maxCount - 1));
    const auto to = static_cast<std::size_t>(i);
    part.xs[to] = xs[from];
    part.ys[to] = ys[from];
  }
  return part;
}

// Makes room for `count` points and padding for a vector that begins at the last one.
void TFitPoints::resize(int count) {
  const auto padded = static_cast<std::size_t>(count + kLanes - 1);
  xs.assign(padded, 0.0F);
  ys.assign(padded, kPaddingY);
  pointCount = count;
}

}  // namespace zelFit
