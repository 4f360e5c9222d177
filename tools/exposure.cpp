#include "tools/exposure.h"

namespace tool {
namespace {

constexpr double kLeastStripeShare = 0.125;  // of the columns: less is taken for no stripe

std::vector<cv::Point2f> stripeOf(const cv::Mat& image) {
  TWeldTracker tracker(TPresenceSettings().params());
  std::vector<cv::Point2f> points = tracker.track(image).line.stripePts;
  return static_cast<double>(points.size()) < kLeastStripeShare * image.cols ? std::vector<cv::Point2f>() : points;
}

}  // namespace

TExposure exposureOf(const cv::Mat& image, const LightingAdaptation::TExposureTarget& target,
                     const LightingAdaptation::TStripeTarget& stripe) {
  using namespace LightingAdaptation;
  TExposure exposure;
  calcExposureParam(image, exposure.meanGray, exposure.brightPixelNum);
  exposure.light = measureStripeLight(image, stripeOf(image));
  const double brightShare = exposure.brightPixelNum / static_cast<double>(image.total());
  exposure.factor = exposure.light.columns > 0 ? adviseExposureFactor(exposure.light, stripe)
                                               : adviseExposureFactor(exposure.meanGray, brightShare, target);
  return exposure;
}

}  // namespace tool
