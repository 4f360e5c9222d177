// Exposure figures, measured in times of copying the same frame: copy and figures take turns, so that whatever
// else the machine does meets both. Prints the ratio of the medians as the counter `timesCopyTo`.
#include "against_copy.h"
#include "zelWeldDetect.h"

#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>

#include <cmath>

namespace {

using namespace LightingAdaptation;

constexpr int kReflectionSizePx = 50;
const cv::Size kFrameSize(1280, 1024);

// A saturated stripe, 9 px wide, on a dim textured surface.
cv::Mat stripeFrame() {
  cv::Mat frame(kFrameSize, CV_8UC1);
  cv::RNG rng(20240501);
  rng.fill(frame, cv::RNG::UNIFORM, 10, 66);
  for (int x = 0; x < frame.cols; ++x) {
    const int y = frame.rows / 2 + static_cast<int>(std::lround(0.2 * std::abs(x - frame.cols / 2)));
    frame({x, y - 4, 1, 9}).setTo(255);
  }
  return frame;
}

// The stripe, with a quarter of the frame saturated by reflections.
cv::Mat reflectionFrame() {
  cv::Mat frame = stripeFrame();
  cv::ellipse(frame, {400, 400}, {420, 250}, 20.0, 0.0, 360.0, cv::Scalar(255), cv::FILLED);
  return frame;
}

cv::Mat whiteFrame() {
  return cv::Mat(kFrameSize, CV_8UC1, cv::Scalar(255));
}

// Without reflections every bright pixel counts 1; with them fewer than all count.
bool isPlausible(const cv::Mat& frame, int meanGray, int brightPixelNum, bool hasReflections) {
  const int brightPixels = cv::countNonZero(frame > 240);
  const bool isMeanInRange = meanGray > 0 && meanGray <= static_cast<int>(std::ceil(cv::mean(frame)[0]));
  return isMeanInRange && (hasReflections ? brightPixelNum < brightPixels : brightPixelNum == brightPixels);
}

void exposureParam(benchmark::State& state, const cv::Mat& frame, bool hasReflections) {
  int meanGray = 0;
  int brightPixelNum = 0;
  calcExposureParam(frame, meanGray, brightPixelNum);
  if (!isPlausible(frame, meanGray, brightPixelNum, hasReflections)) {
    state.SkipWithError("wrong exposure figures");
    return;
  }
  bench::runAgainstCopy(state, frame, [&] {
    calcExposureParam(frame, meanGray, brightPixelNum);
    benchmark::DoNotOptimize(brightPixelNum);
  });
}

void meanAndCount(benchmark::State& state, const cv::Mat& frame, bool hasReflections) {
  cv::Mat mask;
  removeReflectiveAreas(frame, mask, kReflectionSizePx);
  int meanGray = calcMeanGrayVal(frame, mask);
  int brightPixelNum = calcRangePixelNum(frame, mask, 240, 256);
  if (!isPlausible(frame, meanGray, brightPixelNum, hasReflections)) {
    state.SkipWithError("wrong exposure figures");
    return;
  }
  bench::runAgainstCopy(state, frame, [&] {
    meanGray = calcMeanGrayVal(frame, mask);
    brightPixelNum = calcRangePixelNum(frame, mask, 240, 256);
    benchmark::DoNotOptimize(meanGray);
    benchmark::DoNotOptimize(brightPixelNum);
  });
}

BENCHMARK_CAPTURE(exposureParam, stripe, stripeFrame(), false)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(exposureParam, reflections, reflectionFrame(), true)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(exposureParam, white, whiteFrame(), true)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(meanAndCount, stripe, stripeFrame(), false)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(meanAndCount, reflections, reflectionFrame(), true)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(meanAndCount, white, whiteFrame(), true)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
