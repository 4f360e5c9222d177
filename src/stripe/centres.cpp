#include "stripe/centres.h"

#include "stripe/candidates.h"
#include "stripe/region_scan.h"
#include "support/grey_image.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace weld {
namespace {

// Every edge passes -1 and none 255, so that wilder thresholds change nothing. NaN finds nothing.
int roundThreshold(float threshold) {
  return static_cast<int>(std::nearbyint(std::max(-1.0F, std::min(255.0F, threshold))));
}

}  // namespace

TStripeCentres extractStripeCentres(const cv::Mat& image, const std::vector<cv::Rect>& regions, float threshold,
                                    TStripeScratch& scratch, const TTrace& trace) {
  if (image.empty() || regions.empty()) return {};
  requireReadable(image);

  TRegionScanner scanner(image, roundThreshold(threshold), scratch);
  for (const cv::Rect& region : regions) scanner.scanStripeRegion(region);
  TReducedStripe stripe = reduceStripeCandidates(scanner.candidates, scratch, trace);
  return {std::move(stripe.centres), stripe.modalWidthPx, std::move(scanner.status)};
}

}  // namespace weld
