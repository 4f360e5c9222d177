// The per-frame entry point.
#include "zelWeldDetect.h"

#include "api/dispatch.h"
#include "support/image_test.h"

TWeldLineRes detectWeldLineViaTracking(cv::Mat img, TWeldParams& params, TWeldLineRes prevRes) {
  if (!weld::hasPixels(img)) return {};
  weld::TPlateDetector object;
  object.setWeldParameters(params);
  TWeldLineRes result = weld::detectSeam(object, img, prevRes);
  weld::announceSeam(object, result, object.stripe.widthPx);
  return result;
}
