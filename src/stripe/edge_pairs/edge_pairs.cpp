#include "stripe/edge_pairs/edge_pairs.h"

#include "stripe/edge_pairs/candidates.h"
#include "stripe/edge_pairs/region_scan.h"

#include <algorithm>
#include <cmath>

namespace weld {
namespace {

// Every edge passes -1 and none 255, so that wilder thresholds change nothing. NaN finds nothing.
int roundThreshold(float threshold) {
  return static_cast<int>(std::nearbyint(std::max(-1.0F, std::min(255.0F, threshold))));
}

}  // namespace

TStripe extractEdgePairs(const TFrame& frame, TView<cv::Rect> regions, float threshold) {
  TStripe stripe(frame.memory);
  if (frame.image.empty() || regions.empty()) return stripe;
  TRegionScanner scanner(frame.image, roundThreshold(threshold), frame.memory);
  for (const cv::Rect& region : regions) scanner.scanStripeRegion(region);
  TReducedStripe reduced = reduceStripeCandidates(frame, scanner.candidates);
  stripe.points = std::move(reduced.centres);
  stripe.sources.assign(stripe.points.size(), {});
  stripe.status = std::move(scanner.status);
  stripe.widthPx = reduced.modalWidthPx;
  return stripe;
}

}  // namespace weld
