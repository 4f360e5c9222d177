#include "detectors/stripe_front_end.h"

#include "geometry/line_fitting.h"
#include "stripe/region_scan.h"
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

constexpr TCheck kSearchRegion{TWeldOutcome::noSearchRegion, "search region"};

void reportColumns(const TTrace& trace, const std::vector<TWeldPointStatus>& status) {
  TTraceAttempt& attempt = trace.attempt();
  attempt.columnsScanned = static_cast<std::int32_t>(status.size());
  for (const TWeldPointStatus& column : status) {
    attempt.columnsWithCentre += column.status == kCentreFound ? 1 : 0;
    attempt.columnsWithoutEdge += column.status == kEdgeMissing ? 1 : 0;
    attempt.columnsWithoutPair += column.status == kNoPair ? 1 : 0;
  }
}

TStripe extractInRegions(TDetectorObject& object, const cv::Mat& image, const std::vector<cv::Rect>& regions,
                         TSearchPath path) {
  requireReadable(image);
  const TTrace& trace = object.trace;
  const TStageTimer timer(trace, "stripe");
  trace.beginAttempt(path, TStripeExtraction::edgePairs);
  trace.holds(kSearchRegion, !regions.empty());
  TStripeCentres stripe = extractStripeCentres(image, regions, kEdgeThreshold, object.scratch, trace);
  if (trace) {
    trace.attempt().regions = regions;
    trace.attempt().centres = stripe.points;
    reportColumns(trace, stripe.status);
  }
  object.setSamplinePointsStatus(std::move(stripe.status));
  return {std::move(stripe.points), stripe.modalWidthPx};
}

}  // namespace

TStripe extractWholeStripe(TDetectorObject& object, const cv::Mat& image, const cv::Mat& searchMask) {
  return extractInRegions(object, prepareSearchImage(image, searchMask),
                          buildStripeRegions(image.size(), {}, kBandPx), TSearchPath::first);
}

TStripe extractStripeNear(TDetectorObject& object, const cv::Mat& image,
                          const std::vector<cv::Point2f>& previousStripe, int bandPx) {
  return extractInRegions(object, image, buildStripeRegions(image.size(), toIntPoints(previousStripe), bandPx),
                          TSearchPath::tracking);
}

TStripe extractStripe(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                      const cv::Mat& searchMask, int trackingBandPx) {
  if (prevRes.isFound) return extractStripeNear(object, image, prevRes.stripePts, trackingBandPx);
  return extractWholeStripe(object, image, searchMask);
}

std::vector<cv::Point2f> extractRidgeStripe(const TTrace& trace, const cv::Mat& image, TSearchPath path) {
  const TStageTimer timer(trace, "ridge");
  trace.beginAttempt(path, TStripeExtraction::ridge);
  const std::vector<TRidgePoint> ridge = extractRidgeCentres(toGrey(image), kRidgeMaxSigmaPx, kRidgeMinContrast);
  std::vector<cv::Point2f> centres;
  centres.reserve(ridge.size());
  std::transform(ridge.begin(), ridge.end(), std::back_inserter(centres),
                 [](const TRidgePoint& r) { return r.point; });
  if (trace) {
    trace.attempt().regions = {cv::Rect({0, 0}, image.size())};
    trace.attempt().columnsScanned = image.cols;
    trace.attempt().columnsWithCentre = static_cast<std::int32_t>(centres.size());
    trace.attempt().columnsWithoutEdge = image.cols - trace.attempt().columnsWithCentre;
    trace.attempt().centres = centres;
  }
  return centres;
}

}  // namespace weld
