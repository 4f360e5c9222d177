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

}  // namespace

TLook lookEverywhere(const TFrame& frame) {
  return {TSearchPath::first, buildStripeRegions(frame.image.size(), {}, 0, frame.memory)};
}

TLook lookNear(const TFrame& frame, TPointView stripe, int bandPx) {
  const TList<cv::Point> guide = toIntPoints(stripe, frame.memory);
  return {TSearchPath::tracking, buildStripeRegions(frame.image.size(), guide, bandPx, frame.memory)};
}

TLook lookAlong(const TFrame& frame, TPointView guide, int bandPx) {
  if (guide.empty()) return lookEverywhere(frame);
  TLook look = lookNear(frame, guide, bandPx);
  endWithGuide(guide, look.regions);
  return look;
}

}  // namespace weld
