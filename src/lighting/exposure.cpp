#include "lighting/bit_image.h"
#include "lighting/weighted_sums.h"
#include "zelLighting.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace LightingAdaptation {
namespace {

constexpr int kNoValue = -1;
constexpr int kMaxGrey = 255;
constexpr std::uint8_t kReflectionGrey = 241;  // least grey level of a reflection
constexpr int kReflectionSizePx = 50;          // a reflection holds a square of this side
constexpr int kBrightLow = 240;                // bright pixels lie strictly between these grey levels
constexpr int kBrightHigh = 256;

bool isMaskOf(const cv::Mat& image, const cv::Mat& mask) {
  return mask.isContinuous() && mask.rows == image.rows && mask.cols == image.cols;
}

void requirePlane(const cv::Mat& image) {
  CV_Assert(image.dims <= 2);
}

void requireGrey(const cv::Mat& image) {
  requirePlane(image);
  CV_CheckTypeEQ(image.type(), CV_8UC1, "an 8-bit image of one channel is needed");
}

}  // namespace

void calcExposureParam(cv::Mat image, int& meanGray, int& brightPixelNum) {
  meanGray = kNoValue;
  brightPixelNum = kNoValue;
  if (image.empty()) return;
  requirePlane(image);  // cv::cvtColor takes more dimensions without complaint and reads the wrong pixels
  if (image.channels() == 3) cv::cvtColor(image, image, cv::COLOR_BGR2GRAY);
  cv::Mat mask;
  removeReflectiveAreas(image, mask, kReflectionSizePx);
  meanGray = calcMeanGrayVal(image, mask);
  brightPixelNum = calcRangePixelNum(image, mask, kBrightLow, kBrightHigh);
}

void removeReflectiveAreas(cv::Mat image, cv::Mat& mask, int kernelSize) {
  requireGrey(image);
  CV_Assert(!image.empty());
  CV_CheckGT(kernelSize, 0, "the kernel needs a size");
  // The opening, an erosion and a dilation, gives the reflective areas; dilating the set bits is eroding the
  // clear ones, which leaves the areas that are not reflective.
  weld::TBitImage bits = weld::packPixelsFrom(image, kReflectionGrey);
  weld::erodeSquare(bits, kernelSize);
  weld::invertBits(bits);
  weld::erodeSquare(bits, kernelSize);
  mask.create(image.size(), CV_8UC1);
  weld::unpackBits(bits, mask);
}

int calcMeanGrayVal(cv::Mat image, cv::Mat mask) {
  if (!isMaskOf(image, mask)) return kNoValue;
  requireGrey(image);
  requireGrey(mask);
  const std::int64_t divisor = std::int64_t{image.rows} * image.cols / 4;
  if (divisor == 0) return std::numeric_limits<int>::min();
  return static_cast<int>(weld::sumSampledGrey(image, mask) / static_cast<double>(divisor));
}

int calcRangePixelNum(cv::Mat image, cv::Mat mask, int low, int high) {
  if (!isMaskOf(image, mask)) return kNoValue;
  requireGrey(image);
  requireGrey(mask);
  if (low >= kMaxGrey || high <= 0) return 0;
  const int lowest = std::max(low + 1, 0);
  const int highest = std::min(high - 1, kMaxGrey);
  if (lowest > highest) return 0;
  return static_cast<int>(
      weld::sumRangeWeights(image, mask, static_cast<std::uint8_t>(lowest), static_cast<std::uint8_t>(highest)));
}

}  // namespace LightingAdaptation
