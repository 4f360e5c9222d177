// What to do with the exposure, given the figures of a frame.
#include "zelLighting.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace LightingAdaptation {
namespace {

constexpr double kLeave = 1.0;
constexpr double kLargestFactor = 4.0;    // clipped pixels hide how far off an exposure is
constexpr double kTooBrightFactor = 0.5;  // at most, when too many pixels are clipped

}  // namespace

double adviseExposureFactor(int meanGray, double brightShare, const TExposureTarget& target) {
  if (meanGray < 0) return kLeave;
  const std::int64_t distance = std::abs(std::int64_t{meanGray} - target.meanGray);
  const bool isTooBright = brightShare > target.brightShare;
  if (!isTooBright && distance <= target.tolerance) return kLeave;
  const double wanted = static_cast<double>(target.meanGray) / std::max(meanGray, 1);
  return std::clamp(wanted, 1.0 / kLargestFactor, isTooBright ? kTooBrightFactor : kLargestFactor);
}

double adviseExposureFactor(const TStripeLight& light, const TStripeTarget& target) {
  if (light.columns <= 0) return kLeave;
  if (light.saturatedShare > target.saturatedShare)
    return std::clamp(1.0 - light.saturatedShare, kTooBrightFactor, kLeave);
  if (!(light.peakOverBackground < target.leastPeak) || std::isnan(target.wantedPeak)) return kLeave;
  return std::clamp(target.wantedPeak / std::max(light.peakOverBackground, 1.0), kLeave, kLargestFactor);
}

}  // namespace LightingAdaptation
