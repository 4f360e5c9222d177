// How bright the stripe is, column by column.
#include "support/grey_image.h"
#include "support/median.h"
#include "zelLighting.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace LightingAdaptation {
namespace {

constexpr int kReachPx = 12;  // rows above and below a centre where the peak may lie
constexpr int kSaturatedGrey = 250;

// The median of a column.
int backgroundOf(const cv::Mat& grey, int x) {
  std::array<int, 256> counts{};
  for (int y = 0; y < grey.rows; ++y) ++counts[grey.at<std::uint8_t>(y, x)];
  int level = 0;
  for (int seen = counts[0]; 2 * seen < grey.rows; seen += counts[++level]) {
  }
  return level;
}

int peakOf(const cv::Mat& grey, int x, int y) {
  int peak = 0;
  for (int row = std::max(y - kReachPx, 0); row <= std::min(y + kReachPx, grey.rows - 1); ++row)
    peak = std::max(peak, static_cast<int>(grey.at<std::uint8_t>(row, x)));
  return peak;
}

}  // namespace

TStripeLight measureStripeLight(const cv::Mat& image, const std::vector<cv::Point2f>& stripePts) {
  TStripeLight light;
  if (image.empty()) return light;
  weld::requireReadable(image);
  const cv::Mat grey = weld::toGrey(image);
  weld::TList<double> peaks(weld::heapMemory());
  int saturated = 0;
  for (const cv::Point2f centre : stripePts) {
    const bool isInside = centre.x >= 0.0F && centre.y >= 0.0F && centre.x < static_cast<float>(grey.cols) &&
                          centre.y < static_cast<float>(grey.rows);
    if (!isInside) continue;
    const int x = static_cast<int>(centre.x);
    const int peak = peakOf(grey, x, static_cast<int>(centre.y));
    peaks.push_back(peak - backgroundOf(grey, x));
    saturated += peak >= kSaturatedGrey ? 1 : 0;
  }
  if (peaks.empty()) return light;
  light.columns = static_cast<int>(peaks.size());
  light.saturatedShare = saturated / static_cast<double>(peaks.size());
  light.peakOverBackground = weld::medianOf(peaks);
  return light;
}

}  // namespace LightingAdaptation
