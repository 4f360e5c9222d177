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

void coverStripe(TIntPointView stripe, const TBand& band, cv::Size imageSize, TList<cv::Rect>& regions) {
  for (cv::Rect& region : regions) {
    int top = region.y;
    int bottom = region.br().y;
    for (const cv::Point p : stripe) {
      if (p.x < region.x || p.x >= region.br().x) continue;
      top = std::min(top, p.y - band.halfPx);
      bottom = std::max(bottom, p.y + band.halfPx);
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
  TLook look{TSearchPath::tracking, buildStripeRegions(frame.image.size(), guide, band.halfPx, frame.memory)};
  const bool isWhole = look.regions.size() == 1 && look.regions[0].size() == frame.image.size();  // no guide
  if (band.coversStripe && !isWhole) coverStripe(guide, band, frame.image.size(), look.regions);
  return look;
}

TLook lookAlong(const TFrame& frame, TPointView guide, const TBand& band) {
  if (guide.empty()) return lookEverywhere(frame);
  TLook look = lookNear(frame, guide, band);
  endWithGuide(guide, look.regions);
  return look;
}

}  // namespace weld
