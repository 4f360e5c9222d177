#include "stripe/open_parts.h"

#include <numeric>

namespace weld {

namespace {

constexpr int kBesideColumns = 80;
constexpr double kMostOpen = 0.7;  // of the columns: from here on one search of all is quicker

// What the regions have of some columns.
cv::Rect partOf(TView<cv::Rect> regions, const cv::Rect& columns) {
  cv::Rect part;
  for (const cv::Rect& region : regions) part |= region & columns;
  return part;
}

}  // namespace

TList<cv::Rect> findOpenParts(const TStripe& edgePairs, TView<cv::Rect> regions, cv::Size imageSize) {
  TList<cv::Rect> parts(edgePairs.points.get_allocator().resource());
  const cv::Rect image({0, 0}, imageSize);
  auto centre = edgePairs.points.begin();
  for (const TWeldPointStatus& column : edgePairs.status) {
    const auto x = static_cast<float>(column.pos);
    while (centre != edgePairs.points.end() && centre->x < x) ++centre;
    if (centre != edgePairs.points.end() && centre->x == x) continue;
    const cv::Rect about(column.pos - kBesideColumns, 0, 2 * kBesideColumns + 1, image.height);
    const bool isApart = parts.empty() || parts.back().br().x < about.x;
    if (isApart) {
      parts.push_back(about & image);
    } else {
      parts.back() |= about & image;
    }
  }
  const int columns = std::accumulate(parts.begin(), parts.end(), 0,
                                      [](int sum, const cv::Rect& part) { return sum + part.width; });
  if (columns > kMostOpen * static_cast<double>(edgePairs.status.size())) parts.assign(1, image);
  for (cv::Rect& part : parts) part = partOf(regions, part);
  return parts;
}

}  // namespace weld
