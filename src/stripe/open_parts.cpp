#include "stripe/open_parts.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace weld {

namespace {

constexpr int kBesideColumns = 80;
constexpr float kLevelPx = 6.0F;    // rows from side to side of a hole over which the stripe goes level
constexpr double kMostMoved = 8.0;  // columns of a hole that the last frame had stripe in
constexpr double kMostMovedShare = 0.5;
constexpr double kMostOpen = 0.7;  // of the columns: from here on one search of all is quicker

// What the regions have of some columns.
cv::Rect partOf(TView<cv::Rect> regions, const cv::Rect& columns) {
  cv::Rect part;
  for (const cv::Rect& region : regions) part |= region & columns;
  return part;
}

// Open columns between two centres, or beyond the first or the last one.
struct THole {
  const cv::Point2f* left = nullptr;
  const cv::Point2f* right = nullptr;
  int first = 0;
  int last = -1;

  bool isOpen() const { return first <= last; }
  int columns() const { return last - first + 1; }
  bool isLevel() const { return left != nullptr && right != nullptr && std::abs(right->y - left->y) <= kLevelPx; }
};

// But for a few columns at its ends: the part has moved.
bool wasOpen(const THole& hole, TPointView before) {
  if (before.empty()) return false;
  const TPointView inside = centresIn(before, {static_cast<float>(hole.first), static_cast<float>(hole.last)});
  return static_cast<double>(inside.size()) <= std::min(kMostMoved, kMostMovedShare * hole.columns());
}

template <typename TDo>
void forHoles(const TStripe& edgePairs, const TDo& treat) {
  const cv::Point2f* next = edgePairs.points.data();
  const cv::Point2f* const end = next + edgePairs.points.size();
  THole hole;
  for (const TWeldPointStatus& column : edgePairs.status) {
    while (next != end && next->x < static_cast<float>(column.pos)) ++next;
    if (next == end || next->x != static_cast<float>(column.pos)) {
      if (!hole.isOpen()) hole.first = column.pos;
      hole.last = column.pos;
      continue;
    }
    hole.right = next;
    if (hole.isOpen()) treat(hole);
    hole = THole();
    hole.left = next;
  }
  if (hole.isOpen()) treat(hole);
}

}  // namespace

TList<cv::Rect> findOpenParts(const TStripe& edgePairs, TView<cv::Rect> regions, cv::Size imageSize,
                              const TOpenRule& rule) {
  TList<cv::Rect> parts(edgePairs.points.get_allocator().resource());
  const cv::Rect image({0, 0}, imageSize);
  forHoles(edgePairs, [&](const THole& hole) {
    if (hole.isLevel() && hole.columns() < rule.leastColumns) return;
    if (static_cast<float>(hole.last) < rule.near.from || static_cast<float>(hole.first) > rule.near.to) return;
    if (wasOpen(hole, rule.before)) return;
    const cv::Rect columns(hole.first - kBesideColumns, 0, hole.columns() + 2 * kBesideColumns, image.height);
    const bool isApart = parts.empty() || parts.back().br().x < columns.x;
    if (isApart) {
      parts.push_back(columns & image);
    } else {
      parts.back() |= columns & image;
    }
  });
  const int columns = std::accumulate(parts.begin(), parts.end(), 0,
                                      [](int sum, const cv::Rect& part) { return sum + part.width; });
  if (columns > kMostOpen * static_cast<double>(edgePairs.status.size())) parts.assign(1, image);
  for (cv::Rect& part : parts) part = partOf(regions, part);
  return parts;
}

}  // namespace weld
