#include "api/look.h"

#include "geometry/line_fitting.h"
#include "stripe/regions.h"
#include "support/line_math.h"

#include <algorithm>

namespace weld {

namespace {

// Where the guide ends there is no stripe, while the last of the regions reaches the border.
void endWithGuide(TPointView guide, TList<cv::Rect>& regions) {
  const int end = truncToInt(guide.back().x) + 1;
  for (cv::Rect& region : regions) region.width = std::min(region.width, end - region.x);
}

void coverGuide(TPointView guide, int halfPx, cv::Size imageSize, TList<cv::Rect>& regions) {
  for (cv::Rect& region : regions) {
    int top = region.y;
    int bottom = region.br().y;
    const auto isBefore = [](cv::Point2f p, int x) { return p.x < static_cast<float>(x); };
    const auto* const first = std::lower_bound(guide.begin(), guide.end(), region.x, isBefore);
    const auto* const last = std::lower_bound(first, guide.end(), region.br().x, isBefore);
    for (const auto* point = first; point != last; ++point) {
      top = std::min(top, truncToInt(point->y) - halfPx);
      bottom = std::max(bottom, truncToInt(point->y) + halfPx);
    }
    region.y = std::max(top, 0);
    region.height = std::min(bottom, imageSize.height) - region.y;
  }
}

}  // namespace

TLook lookEverywhere(const TFrame& frame) {
  return {TSearchPath::first, buildStripeRegions(frame.image.size(), {}, 0, frame.memory)};
}

TLook lookNear(const TFrame& frame, TPointView stripe, const TBand& band) {
  const TList<cv::Point> guide = toIntPoints(stripe, frame.memory);
  return {TSearchPath::tracking, buildStripeRegions(frame.image.size(), guide, band.halfPx, frame.memory)};
}

TLook lookAlong(const TFrame& frame, TPointView guide, const TBand& band) {
  if (guide.empty()) return lookEverywhere(frame);
  TLook look = lookNear(frame, guide, band);
  endWithGuide(guide, look.regions);
  if (band.coversGuide) coverGuide(guide, band.halfPx, frame.image.size(), look.regions);
  return look;
}

}  // namespace weld
