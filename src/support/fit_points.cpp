#include "support/fit_points.h"

#include <algorithm>

namespace zelFit {

namespace {

constexpr int kLanes = 4;
constexpr float kPaddingY = 1e15F;  // far from every line: no weight, a constant in every score

}  // namespace

std::optional<TFitPoints> TFitPoints::from(const std::vector<cv::Point>& points) {
  if (points.empty()) return std::nullopt;
  const auto byX = [](cv::Point a, cv::Point b) { return a.x < b.x; };
  const auto byY = [](cv::Point a, cv::Point b) { return a.y < b.y; };
  const auto [left, right] = std::minmax_element(points.begin(), points.end(), byX);
  const auto [top, bottom] = std::minmax_element(points.begin(), points.end(), byY);
  if (left->x == right->x) return std::nullopt;
  TFitPoints fit;
  fit.centreX = 0.5 * (static_cast<double>(left->x) + right->x);
  fit.centreY = 0.5 * (static_cast<double>(top->y) + bottom->y);
  fit.scaleX = 0.5 * (static_cast<double>(right->x) - left->x);
  fit.xs.reserve(points.size() + kLanes);
  fit.ys.reserve(points.size() + kLanes);
  for (const cv::Point& p : points) {
    fit.append(static_cast<float>((p.x - fit.centreX) / fit.scaleX), static_cast<float>(p.y - fit.centreY));
  }
  fit.pad();
  return fit;
}

double TFitPoints::interceptOf(const TScaledLine& line) const {
  return centreY + static_cast<double>(line.intercept) - slopeOf(line) * centreX;
}

TFitPoints TFitPoints::subsample(int maxCount) const {
  if (pointCount <= maxCount) return *this;
  TFitPoints part;
  part.centreX = centreX;
  part.centreY = centreY;
  part.scaleX = scaleX;
  for (int i = 0; i < maxCount; ++i) {
    const auto index = static_cast<std::size_t>(static_cast<std::int64_t>(i) * (pointCount - 1) / (maxCount - 1));
    part.append(xs[index], ys[index]);
  }
  part.pad();
  return part;
}

void TFitPoints::append(float x, float y) {
  xs.push_back(x);
  ys.push_back(y);
  ++pointCount;
}

void TFitPoints::pad() {
  while (xs.size() % kLanes != 0) {
    xs.push_back(0.0F);
    ys.push_back(kPaddingY);
  }
}

}  // namespace zelFit
