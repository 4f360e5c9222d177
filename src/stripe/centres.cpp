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

// Every grey value reaches -1 and none 256, so that wilder thresholds change nothing. NaN finds nothing.
int roundThreshold(float threshold) {
  return static_cast<int>(std::nearbyint(std::max(-1.0F, std::min(256.0F, threshold))));
}

}  // namespace

TStripeCentres extractStripeCentres(const cv::Mat& image, const std::vector<cv::Rect>& regions, float threshold) {
  if (image.empty() || regions.empty()) return {};

  const cv::Mat grey = toGrey(image);
  TStripeCentres result;
  std::vector<TStripeCandidate> candidates;
  for (const cv::Rect& region : regions) {
    scanStripeRegion(grey, region, roundThreshold(threshold), candidates, result.status);
  }
  TReducedStripe stripe = reduceStripeCandidates(std::move(candidates));
  result.points = std::move(stripe.centres);
  result.modalWidthPx = stripe.modalWidthPx;
  return result;
}

}  // namespace weld
