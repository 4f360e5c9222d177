// Images, masks and numbers of any kind through the exposure figures.
#include "fuzz/input.h"
#include "fuzz/verdict.h"

#include <climits>
#include <cmath>

namespace {

using fuzz::require;
using fuzz::TInput;

bool isGrey(const cv::Mat& image) {
  return image.dims <= 2 && image.type() == CV_8UC1;
}

bool isGreyOrBgr(const cv::Mat& image) {
  return image.dims <= 2 && (image.type() == CV_8UC1 || image.type() == CV_8UC3);
}

void measureFrame(TInput& input) {
  const fuzz::TFrame frame = fuzz::takeFrame(input);
  int meanGray = 0;
  int brightPixelNum = 0;
  const bool isMeasurable = frame.image.empty() || isGreyOrBgr(frame.image);
  fuzz::runCall(!isMeasurable, [&] {
    LightingAdaptation::calcExposureParam(frame.image, meanGray, brightPixelNum);
    require(frame.image.empty() || isGreyOrBgr(frame.image), "cv::Exception for other types");
    require(frame.image.empty() == (brightPixelNum < 0), "a figure for every image");
  });
}

void maskReflections(TInput& input) {
  fuzz::TFrame frame = fuzz::takeFrame(input);
  fuzz::TFrame mask = fuzz::takeFrame(input);
  const bool isInPlace = input.takeFlag();
  const int kernelSize = input.takeInt();
  fuzz::runCall(!isGrey(frame.image) || frame.image.empty() || kernelSize <= 0, [&] {
    cv::Mat& result = isInPlace ? frame.image : mask.image;
    const cv::Size size = frame.image.size();
    LightingAdaptation::removeReflectiveAreas(frame.image, result, kernelSize);
    require(result.size() == size && result.type() == CV_8UC1, "a mask of the image's size");
  });
}

void sumGreyLevels(TInput& input) {
  const fuzz::TFrame frame = fuzz::takeFrame(input);
  const fuzz::TFrame other = fuzz::takeFrame(input);
  const cv::Mat mask = input.takeFlag() ? frame.image : other.image;
  const int low = input.takeInt();
  const int high = input.takeInt();
  fuzz::runCall(!isGrey(frame.image) || !isGrey(mask), [&] {
    const int count = LightingAdaptation::calcRangePixelNum(frame.image, mask, low, high);
    const int mean = LightingAdaptation::calcMeanGrayVal(frame.image, mask);
    require((count == -1) == (mean == -1), "both figures or none");
    require(count >= -1 && (mean >= -1 || mean == INT_MIN), "figures that are counts");
  });
}

void adviseExposure(TInput& input) {
  const int meanGray = input.takeInt();
  const LightingAdaptation::TExposureTarget target{input.takeInt(), input.takeInt(), input.takeDouble()};
  const double factor = LightingAdaptation::adviseExposureFactor(meanGray, input.takeDouble(), target);
  require(factor >= 0.25 && factor <= 4.0, "a factor of one step");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  fuzz::quietOpenCv();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr void (*kCalls[])(TInput&) = {measureFrame, maskReflections, sumGreyLevels, adviseExposure};
  TInput input(data, size);
  kCalls[input.takeBelow(static_cast<int>(std::size(kCalls)))](input);
  return 0;
}
