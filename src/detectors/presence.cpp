#include "detectors/presence.h"

#include "detectors/stripe_front_end.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace weld {

namespace {

constexpr float kMinChange = 0.2F;

// Deliberate: the quotient of the counts is an integer, truncated toward zero.
bool isStripePresent(std::size_t countNow, std::size_t countBefore) {
  const auto now = static_cast<std::int64_t>(countNow);
  const auto before = static_cast<std::int64_t>(countBefore);
  const std::int64_t quotient = (now - before) / now;
  return std::abs(static_cast<float>(std::abs(quotient)) - 1.0F) > kMinChange;
}

std::vector<cv::Point2f> extractPoints(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                                       const cv::Mat& searchMask) {
  const TWeldParams params = object.getWeldParameters();
  const bool usesRidges = params.flagPara1;
  const bool searchesNearPrevious = params.flagPara2;
  if (usesRidges) return extractRidgeStripe(image);
  if (searchesNearPrevious) return extractStripe(object, image, prevRes, searchMask).centres;
  return extractWholeStripe(object, image, searchMask).centres;
}

}  // namespace

TWeldLineRes checkStripePresence(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                                 const cv::Mat& searchMask) {
  TWeldLineRes result;
  result.stripePts = extractPoints(object, image, prevRes, searchMask);
  if (result.stripePts.empty()) return result;
  result.isFound = isStripePresent(result.stripePts.size(), prevRes.stripePts.size());
  return result;
}

}  // namespace weld
