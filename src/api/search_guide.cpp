#include "api/search_guide.h"

#include "support/line_math.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace weld {

namespace {

constexpr std::size_t kMinPoints = 10;
constexpr std::size_t kEndPiecePoints = 50;
constexpr int kMaxStretchPx = 150;  // a region ends where the guide has come farther than this
constexpr int kMinStretches = 2;
constexpr double kSteepest = 2.0;  // slope of a continuation

// A straight continuation at one end of the guide.
struct TRay {
  double slope = 0.0;
  int step = 1;  // columns: -1 to the left, 1 to the right
};

// Least squares.
double slopeOf(TPoints::const_iterator first, TPoints::const_iterator last) {
  cv::Point2d mean;
  for (auto p = first; p != last; ++p) mean += cv::Point2d(*p) / static_cast<double>(last - first);
  double xx = 0.0;
  double xy = 0.0;
  for (auto p = first; p != last; ++p) {
    const cv::Point2d d = cv::Point2d(*p) - mean;
    xx += d.x * d.x;
    xy += d.x * d.y;
  }
  return xx > 0.0 ? std::clamp(xy / xx, -kSteepest, kSteepest) : 0.0;
}

cv::Point2f pointAlong(const TRay& ray, cv::Point2f from, int columns) {
  const int dx = ray.step * columns;
  return {std::floor(from.x) + static_cast<float>(dx), from.y + static_cast<float>(ray.slope * dx)};
}

bool isInside(cv::Point2f p, cv::Size imageSize) {
  return p.x >= 0.0F && p.y >= 0.0F && p.x < static_cast<float>(imageSize.width) &&
         p.y < static_cast<float>(imageSize.height);
}

// The columns up to maxColumns that the continuation stays inside the image.
int roomAlong(const TRay& ray, cv::Point2f from, int maxColumns, cv::Size imageSize) {
  int columns = 0;
  while (columns < maxColumns && isInside(pointAlong(ray, from, columns + 1), imageSize)) ++columns;
  return columns;
}

// Continues the sorted guide at both ends; false when there is no room at either.
bool growGuide(const TRay& left, const TRay& right, int columns, cv::Size imageSize, TPoints& guide) {
  const cv::Point2f first = guide.front();
  const cv::Point2f last = guide.back();
  const int leftColumns = roomAlong(left, first, columns, imageSize);
  const int rightColumns = roomAlong(right, last, columns, imageSize);
  guide.insert(guide.begin(), static_cast<std::size_t>(leftColumns), cv::Point2f());
  for (int i = 0; i < leftColumns; ++i)
    guide[static_cast<std::size_t>(i)] = pointAlong(left, first, leftColumns - i);
  for (int i = 1; i <= rightColumns; ++i) guide.push_back(pointAlong(right, last, i));
  return leftColumns + rightColumns > 0;
}

bool hasEnoughStretches(const TPoints& guide) {
  int stretches = 0;
  int begin = truncToInt(guide.front().x);
  for (const cv::Point2f p : guide) {
    const int column = truncToInt(p.x);
    if (column - begin <= kMaxStretchPx) continue;
    begin = column;
    if (++stretches == kMinStretches) return true;
  }
  return false;
}

}  // namespace

TPoints extendGuide(const TFrame& frame, TPointView stripe, int marginPx) {
  const cv::Size imageSize = frame.image.size();
  TPoints none(frame.memory);
  TPoints guide(stripe.begin(), stripe.end(), frame.memory);
  if (guide.size() < kMinPoints) return none;
  // A total order, so that the result is the same whatever the sort does with points of one column.
  const auto isBefore = [](cv::Point2f a, cv::Point2f b) { return a.x != b.x ? a.x < b.x : a.y < b.y; };
  if (!std::is_sorted(guide.begin(), guide.end(), isBefore)) std::sort(guide.begin(), guide.end(), isBefore);

  const auto piece = static_cast<std::ptrdiff_t>(std::min(guide.size(), kEndPiecePoints));
  const TRay left{slopeOf(guide.begin(), guide.begin() + piece), -1};
  const TRay right{slopeOf(guide.end() - piece, guide.end()), 1};
  bool hasGrown = growGuide(left, right, marginPx, imageSize, guide);
  while (hasGrown && !hasEnoughStretches(guide))
    hasGrown = growGuide(left, right, kMaxStretchPx, imageSize, guide);
  if (!hasEnoughStretches(guide)) return none;
  return guide;
}

}  // namespace weld
