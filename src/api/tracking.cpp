// The per-frame entry point and the choice of the detector.
#include "zelWeldDetect.h"

#include "detectors/corner.h"
#include "detectors/detector_object.h"
#include "detectors/gap.h"
#include "detectors/lap.h"
#include "detectors/plate.h"
#include "detectors/presence.h"
#include "support/image_test.h"

namespace {

template <typename TObject>
using TDetect = TWeldLineRes (*)(TObject&, const cv::Mat& image, const TWeldLineRes& prevRes,
                                 const cv::Mat& searchMask);

template <typename TObject>
TWeldLineRes runOnFreshObject(TDetect<TObject> detect, const cv::Mat& image, const TWeldParams& params,
                              const TWeldLineRes& prevRes) {
  TObject object;
  object.setWeldParameters(params);
  return detect(object, image, prevRes, cv::Mat());
}

TWeldLineRes dispatch(const cv::Mat& image, const TWeldParams& params, const TWeldLineRes& prevRes) {
  using weld::TDetectorObject;
  using weld::TPlateDetector;
  switch (params.weldType) {
    case TWeldType::buttGap:
      return runOnFreshObject<TDetectorObject>(weld::detectGapSeam, image, params, prevRes);
    case TWeldType::lap:
      return runOnFreshObject<TDetectorObject>(weld::detectLapSeam, image, params, prevRes);
    case TWeldType::corner:
      return runOnFreshObject<TDetectorObject>(weld::detectCornerSeam, image, params, prevRes);
    case TWeldType::plate:
      return runOnFreshObject<TPlateDetector>(weld::detectPlateSeam, image, params, prevRes);
    case TWeldType::stripePresence:
      return runOnFreshObject<TDetectorObject>(weld::checkStripePresence, image, params, prevRes);
    default:
      return {};
  }
}

}  // namespace

TWeldLineRes detectWeldLineViaTracking(cv::Mat img, TWeldParams& params, TWeldLineRes prevRes) {
  if (!weld::hasPixels(img)) return {};
  return dispatch(img, params, prevRes);
}
