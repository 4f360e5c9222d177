#include "api/dispatch.h"

#include "detectors/corner.h"
#include "detectors/gap.h"
#include "detectors/lap.h"
#include "detectors/presence.h"
#include "support/trace_conclusion.h"

namespace weld {

namespace {

TWeldLineRes runDetector(TPlateDetector& object, const cv::Mat& image, const TWeldLineRes& prevRes) {
  const cv::Mat searchMask;
  switch (object.getWeldParameters().weldType) {
    case TWeldType::buttGap:
      return detectGapSeam(object, image, prevRes, searchMask);
    case TWeldType::lap:
      return detectLapSeam(object, image, prevRes, searchMask);
    case TWeldType::corner:
      return detectCornerSeam(object, image, prevRes, searchMask);
    case TWeldType::plate:
      return detectPlateSeam(object, image, prevRes, searchMask);
    case TWeldType::stripePresence:
      return checkStripePresence(object, image, prevRes, searchMask);
    default:
      return {};
  }
}

}  // namespace

TWeldLineRes detectSeam(TPlateDetector& object, const cv::Mat& image, const TWeldLineRes& prevRes) {
  TWeldLineRes result = runDetector(object, image, prevRes);
  if (object.trace) concludeAttempts(object.trace.record(), result, object.getWeldParameters().weldType);
  return result;
}

void announceSeam(TPlateDetector& object, const TWeldLineRes& result, double stripeWidthPx) {
  if (object.getWeldParameters().weldType == TWeldType::plate) showPlateInfo(object, result, stripeWidthPx);
}

}  // namespace weld
