#include "detectors/stripe_front_end.h"

#include "geometry/line_fitting.h"
#include "stripe/regions.h"
#include "stripe/ridge.h"
#include "support/grey_image.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace weld {

namespace {

constexpr double kRidgeMaxSigmaPx = 6.0;
constexpr double kRidgeMinContrast = 30.0;  // grey levels

TStripe extractInRegions(TDetectorObject& object, const cv::Mat& image, const std::vector<cv::Rect>& regions) {
  requireReadable(image);
  TStripeCentres stripe = extractStripeCentres(image, regions, kEdgeThreshold);
  object.setSamplinePointsStatus(std::move(stripe.status));
  return {std::move(stripe.points), stripe.modalWidthPx};
}

}  // namespace

TStripe extractWholeStripe(TDetectorObject& object, const cv::Mat& image, const cv::Mat& searchMask) {
  return extractInRegions(object, prepareSearchImage(image, searchMask),
                          buildStripeRegions(image.size(), {}, kBandPx));
}

TStripe extractStripeNear(TDetectorObject& object, const cv::Mat& image,
                          const std::vector<cv::Point2f>& previousStripe, int bandPx) {
  return extractInRegions(object, image, buildStripeRegions(image.size(), toIntPoints(previousStripe), bandPx));
}

TStripe extractStripe(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                      const cv::Mat& searchMask, int trackingBandPx) {
  if (prevRes.isFound) return extractStripeNear(object, image, prevRes.stripePts, trackingBandPx);
  return extractWholeStripe(object, image, searchMask);
}

std::vector<cv::Point2f> extractRidgeStripe(const cv::Mat& image) {
  const std::vector<TRidgePoint> ridge = extractRidgeCentres(toGrey(image), kRidgeMaxSigmaPx, kRidgeMinContrast);
  std::vector<cv::Point2f> centres;
  centres.reserve(ridge.size());
  std::transform(ridge.begin(), ridge.end(), std::back_inserter(centres),
                 [](const TRidgePoint& r) { return r.point; });
  return centres;
}

}  // namespace weld
