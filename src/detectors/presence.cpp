#include "detectors/presence.h"

#include "detectors/stripe_front_end.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace weld {

namespace {

constexpr float kMinChange = 0.2F;

constexpr TCheck kStripePoints = countCheck(TWeldOutcome::noStripe, "stripe points", TRule::atLeast);
constexpr TCheck kPointsBefore =
    countCheck(TWeldOutcome::stripeChanged, "stripe points in the last frame", TRule::atLeast);
constexpr TCheck kSteadyCount{TWeldOutcome::stripeChanged, "steady number of stripe points"};

// Deliberate: the quotient of the counts is an integer, truncated toward zero.
bool isCountSteady(std::size_t countNow, std::size_t countBefore) {
  const auto now = static_cast<std::int64_t>(countNow);
  const auto before = static_cast<std::int64_t>(countBefore);
  const std::int64_t quotient = (now - before) / now;
  return std::abs(static_cast<float>(std::abs(quotient)) - 1.0F) > kMinChange;
}

TLentList<cv::Point2f> extractPoints(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                                     const cv::Mat& searchMask) {
  const TWeldParams params = object.getWeldParameters();
  const bool usesRidges = params.flagPara1;
  const bool searchesNearPrevious = params.flagPara2;
  if (usesRidges) return extractRidgeStripe(object, image, TSearchPath::first);
  if (searchesNearPrevious) return extractStripe(object, image, prevRes, searchMask);
  return extractWholeStripe(object, image, searchMask);
}

}  // namespace

TWeldLineRes checkStripePresence(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                                 const cv::Mat& searchMask) {
  TWeldLineRes result;
  result.stripePts = extractPoints(object, image, prevRes, searchMask);
  const TTrace& trace = object.trace;
  const std::size_t now = result.stripePts.size();
  const std::size_t before = prevRes.stripePts.size();
  result.isFound = trace.passes(kStripePoints, now, std::size_t{1}) &&
                   trace.passes(kPointsBefore, before, std::size_t{1}) &&
                   trace.holds(kSteadyCount, isCountSteady(now, before));
  return result;
}

}  // namespace weld
