#include "stripe/centres.h"

#include "stripe/candidates.h"
#include "stripe/region_scan.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <utility>

namespace weld {
namespace {

cv::Mat toGrey(const cv::Mat& image) {
  cv::Mat grey = image;
  if (image.channels() == 3) cv::cvtColor(image, grey, cv::COLOR_BGR2GRAY);
  if (image.channels() == 4) cv::cvtColor(image, grey, cv::COLOR_BGRA2GRAY);
  CV_Assert(grey.dims == 2 && grey.type() == CV_8UC1);
  return grey;
}

// Every edge passes -1 and none 255, so that wilder thresholds change nothing. NaN finds nothing.
int roundThreshold(float threshold) {
  return static_cast<int>(std::nearbyint(std::max(-1.0F, std::min(255.0F, threshold))));
}

}  // namespace

TStripeCentres extractStripeCentres(const cv::Mat& image, const std::vector<cv::Rect>& regions, float threshold) {
  if (image.empty() || regions.empty()) return {};

  TRegionScanner scanner(toGrey(image), roundThreshold(threshold));
  for (const cv::Rect& region : regions) scanner.scanStripeRegion(region);
  TReducedStripe stripe = reduceStripeCandidates(std::move(scanner.candidates));
  return {std::move(stripe.centres), stripe.modalWidthPx, std::move(scanner.status)};
}

}  // namespace weld
