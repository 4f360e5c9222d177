#include "stripe/ridge_stripe.h"

#include "stripe/region_scan.h"
#include "stripe/ridge.h"
#include "support/grey_image.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace weld {
namespace {

constexpr int kWidths = 256;  // whole pixels that are told apart

// The smallest of equally frequent ones.
double modalWidth(const std::vector<TRidgePoint>& ridge) {
  std::array<int, kWidths> counts{};
  for (const TRidgePoint& r : ridge)
    ++counts[std::clamp(static_cast<int>(std::lround(r.widthPx)), 0, kWidths - 1)];
  return static_cast<double>(std::max_element(counts.begin(), counts.end()) - counts.begin());
}

cv::Rect boundsOf(const std::vector<cv::Rect>& regions, cv::Size imageSize) {
  cv::Rect bounds;
  for (const cv::Rect& region : regions) bounds |= region;
  return bounds & cv::Rect({0, 0}, imageSize);
}

// The columns of a region from the first ridge point that is not left of it on; returns the first one behind it.
std::size_t takeColumns(const cv::Rect& region, const std::vector<TRidgePoint>& ridge, std::size_t next,
                        TStripeCentres& stripe) {
  const auto top = static_cast<float>(region.y);
  const auto bottom = static_cast<float>(region.br().y);
  while (next < ridge.size() && ridge[next].point.x < static_cast<float>(region.x)) ++next;
  for (int x = region.x; x < region.br().x; ++x) {
    const bool hasRidge = next < ridge.size() && ridge[next].point.x == static_cast<float>(x);
    const bool isInside = hasRidge && ridge[next].point.y >= top && ridge[next].point.y < bottom;
    if (isInside) stripe.points.push_back(ridge[next].point);
    stripe.status.push_back({x, isInside ? kCentreFound : kEdgeMissing});
    next += hasRidge ? 1 : 0;
  }
  return next;
}

}  // namespace

const std::vector<TRidgePoint>& extractRidgesOf(const cv::Mat& image, const cv::Rect& part,
                                                const TRidgeSettings& settings, TStripeScratch& scratch) {
  if (scratch.ridge.searched == part) return scratch.ridge.points;
  requireReadable(image);
  std::vector<TRidgePoint>& ridge = extractRidgeCentres(toGrey(image(part), scratch.grey), settings.maxSigmaPx,
                                                        settings.minContrast, scratch.ridge);
  const cv::Point2f origin(part.tl());
  for (TRidgePoint& r : ridge) r.point += origin;
  scratch.ridge.searched = part;
  return ridge;
}

TStripeCentres extractRidgeStripeCentres(const cv::Mat& image, const std::vector<cv::Rect>& regions,
                                         const TRidgeSettings& settings, TStripeScratch& scratch) {
  const cv::Rect bounds = boundsOf(regions, image.size());
  if (bounds.empty()) return {};
  const std::vector<TRidgePoint>& ridge = extractRidgesOf(image, bounds, settings, scratch);
  TStripeCentres stripe{
      {&scratch, ridge.size()}, modalWidth(ridge), {&scratch, static_cast<std::size_t>(bounds.width)}};
  std::size_t next = 0;
  for (const cv::Rect& region : regions) next = takeColumns(region, ridge, next, stripe);
  return stripe;
}

}  // namespace weld
