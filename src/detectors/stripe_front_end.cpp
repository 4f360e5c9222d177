#include "detectors/stripe_front_end.h"

#include "geometry/line_fitting.h"
#include "stripe/centres.h"
#include "stripe/region_scan.h"
#include "stripe/regions.h"
#include "stripe/ridge_stripe.h"
#include "stripe/stripe_choice.h"
#include "support/grey_image.h"
#include "support/line_math.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace weld {

namespace {

constexpr TRidgeSettings kRidges{6.0, 30.0};

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

TStripeCentres extractRidges(TDetectorObject& object, const cv::Mat& image, const std::vector<cv::Rect>& regions) {
  const TStageTimer timer(object.trace, "ridge");
  return extractRidgeStripeCentres(image, regions, kRidges, object.scratch);
}

// Centres as the object's search wants them.
TStripeCentres extractCentres(TDetectorObject& object, const cv::Mat& image,
                              const std::vector<cv::Rect>& regions) {
  const TStripeSearch& search = object.search;
  const TTrace& trace = object.trace;
  object.stripe.hasAskedRidges = search.extraction == TStripeExtraction::ridge;
  if (object.stripe.hasAskedRidges) return extractRidges(object, image, regions);
  TStripeCentres edgePairs = extractStripeCentres(image, regions, kEdgeThreshold, object.scratch, trace);
  object.stripe.hasAskedRidges =
      search.extraction == TStripeExtraction::automatic && leavesStripeUnexplained(edgePairs, search.minColumns);
  if (!object.stripe.hasAskedRidges) return edgePairs;
  return chooseStripe(std::move(edgePairs), extractRidges(object, image, regions), trace, &object.scratch);
}

TLentList<cv::Point2f> extractInRegions(TDetectorObject& object, const cv::Mat& image,
                                        const std::vector<cv::Rect>& regions, TSearchPath path) {
  requireReadable(image);
  const TTrace& trace = object.trace;
  const TStageTimer timer(trace, "stripe");
  const bool usesRidges = object.search.extraction == TStripeExtraction::ridge;
  trace.beginAttempt(path, usesRidges ? TStripeExtraction::ridge : TStripeExtraction::edgePairs);
  trace.holds(kSearchRegion, !regions.empty());
  TStripeCentres stripe = extractCentres(object, image, regions);
  object.stripe.columns = static_cast<int>(stripe.points.size());
  object.stripe.widthPx = stripe.modalWidthPx;
  if (trace) {
    trace.attempt().regions = regions;
    trace.attempt().centres = stripe.points;
    reportColumns(trace, stripe.status);
  }
  object.swapSamplinePointsStatus(stripe.status);
  return std::move(stripe.points);
}

// Where the guide ends there is no stripe, while the last of the regions reaches the border.
void endWithGuide(const std::vector<cv::Point2f>& guide, std::vector<cv::Rect>& regions) {
  const int end = truncToInt(guide.back().x) + 1;
  for (cv::Rect& region : regions) region.width = std::min(region.width, end - region.x);
}

TLentList<cv::Point2f> extractAlongGuide(TDetectorObject& object, const cv::Mat& image, int bandPx) {
  const std::vector<cv::Point2f>& guide = *object.search.guide;
  TLentList<cv::Rect> regions =
      buildStripeRegions(image.size(), toIntPoints(guide, &object.scratch), bandPx, &object.scratch);
  if (!guide.empty()) endWithGuide(guide, regions);
  return extractInRegions(object, image, regions, guide.empty() ? TSearchPath::first : TSearchPath::tracking);
}

}  // namespace

TLentList<cv::Point2f> extractWholeStripe(TDetectorObject& object, const cv::Mat& image,
                                          const cv::Mat& searchMask) {
  return extractInRegions(object, prepareSearchImage(image, searchMask),
                          buildStripeRegions(image.size(), {}, kBandPx, &object.scratch), TSearchPath::first);
}

TLentList<cv::Point2f> extractStripeNear(TDetectorObject& object, const cv::Mat& image,
                                         const std::vector<cv::Point2f>& previousStripe, int bandPx) {
  const TLentList<cv::Point> guide = toIntPoints(previousStripe, &object.scratch);
  return extractInRegions(object, image, buildStripeRegions(image.size(), guide, bandPx, &object.scratch),
                          TSearchPath::tracking);
}

TLentList<cv::Point2f> extractStripe(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                                     const cv::Mat& searchMask, int trackingBandPx) {
  if (object.search.guide != nullptr) return extractAlongGuide(object, image, trackingBandPx);
  if (prevRes.isFound) return extractStripeNear(object, image, prevRes.stripePts, trackingBandPx);
  return extractWholeStripe(object, image, searchMask);
}

TLentList<cv::Point2f> extractRidgeStripe(TDetectorObject& object, const cv::Mat& image, TSearchPath path) {
  const TTrace& trace = object.trace;
  const TStageTimer timer(trace, "ridge");
  trace.beginAttempt(path, TStripeExtraction::ridge);
  const cv::Rect whole({0, 0}, image.size());
  const std::vector<TRidgePoint>& ridge = extractRidgesOf(image, whole, kRidges, object.scratch);
  TLentList<cv::Point2f> centres(&object.scratch, ridge.size());
  std::transform(ridge.begin(), ridge.end(), std::back_inserter(centres),
                 [](const TRidgePoint& r) { return r.point; });
  if (trace) {
    trace.attempt().regions = {whole};
    trace.attempt().columnsScanned = image.cols;
    trace.attempt().columnsWithCentre = static_cast<std::int32_t>(centres.size());
    trace.attempt().columnsWithoutEdge = image.cols - trace.attempt().columnsWithCentre;
    trace.attempt().centres = centres;
  }
  return centres;
}

}  // namespace weld
