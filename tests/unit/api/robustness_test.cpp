// Whatever the caller passes, the library neither crashes nor reads out of bounds nor reports nonsense. The
// sanitizer build gives these tests their teeth.
#include "support/detector_types.h"
#include "support/painted_frame.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <vector>

namespace {

using detector_types::frameFor;
using detector_types::paramsFor;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr double kAbsurd[] = {kNaN, kInf, -kInf, 1e300, -1e300, 0.0, -1.0, 1e-300};
constexpr std::int32_t kAbsurdCounts[] = {INT_MIN, -1, 0, INT_MAX};

void expectSane(const TWeldLineRes& result, cv::Size size) {
  EXPECT_TRUE(std::isfinite(result.weldPos.x) && std::isfinite(result.weldPos.y));
  if (!result.isFound) {
    EXPECT_EQ(result.weldPos, cv::Point2f());
  }
  for (const cv::Point2f& p : result.stripePts) {
    ASSERT_TRUE(p.x >= 0.0F && p.x < static_cast<float>(size.width) && p.y >= 0.0F &&
                p.y < static_cast<float>(size.height))
        << p;
  }
}

std::vector<std::vector<cv::Point2f>> garbageStripes() {
  std::vector<std::vector<cv::Point2f>> stripes{{}, {{1.0F, 1.0F}}};
  for (const float bad : {kNaN, kInf, -kInf, 3e38F, -3e38F, 2147483648.0F, -1.0F, 1e6F}) {
    stripes.push_back(std::vector<cv::Point2f>(50, {bad, bad}));
    std::vector<cv::Point2f> oneBad = painted::linePoints(20, 620, 240.0);
    oneBad[300].x = bad;
    stripes.push_back(oneBad);
    oneBad[300] = {320.0F, bad};
    stripes.push_back(oneBad);
  }
  stripes.push_back(std::vector<cv::Point2f>(200, {320.0F, 240.0F}));
  std::vector<cv::Point2f> backwards = painted::linePoints(0, 640, 479.0);
  std::reverse(backwards.begin(), backwards.end());
  stripes.push_back(backwards);
  return stripes;
}

TEST(Robustness, garbageInThePreviousResultIsHarmless) {
  for (const TWeldType type : detector_types::kAll) {
    const cv::Mat image = frameFor(type);
    for (const std::vector<cv::Point2f>& stripe : garbageStripes()) {
      for (const double value : {0.0, 0.5, static_cast<double>(kNaN), -1e300}) {
        TWeldParams params = paramsFor(type);
        params.flagPara2 = true;
        TWeldLineRes prevRes;
        prevRes.isFound = true;
        prevRes.weldPos = {kNaN, kInf};
        prevRes.stripePts = stripe;
        prevRes.auxVal1 = prevRes.auxVal2 = prevRes.auxVal3 = prevRes.auxVal4 = prevRes.trackVal = value;
        expectSane(detectWeldLineViaTracking(image, params, prevRes), image.size());
      }
    }
  }
}

// Sets one parameter at a time, then all of them.
std::vector<TWeldParams> absurdVariants(TWeldType type) {
  constexpr double TWeldParams::*kValues[] = {
      &TWeldParams::dPara1,         &TWeldParams::dPara2,         &TWeldParams::dPara3,
      &TWeldParams::dPara4,         &TWeldParams::dPara6,         &TWeldParams::dPara7,
      &TWeldParams::dPara8,         &TWeldParams::dPara9,         &TWeldParams::dPara10,
      &TWeldParams::angleRange0Min, &TWeldParams::angleRange0Max, &TWeldParams::angleRange1Min,
      &TWeldParams::angleRange1Max, &TWeldParams::angleRange2Min, &TWeldParams::angleRange2Max,
      &TWeldParams::angleRange5Min, &TWeldParams::angleRange5Max};
  std::vector<TWeldParams> variants;
  for (const double absurd : kAbsurd) {
    TWeldParams all = paramsFor(type);
    for (double TWeldParams::*const value : kValues) {
      TWeldParams one = paramsFor(type);
      one.haveGap = false;
      one.*value = absurd;
      all.*value = absurd;
      variants.push_back(one);
    }
    variants.push_back(all);
    TWeldParams range = paramsFor(type);
    range.angleRange4 = {absurd, 45.0};
    variants.push_back(range);
  }
  for (const std::int32_t absurd : kAbsurdCounts) {
    TWeldParams counts = paramsFor(type);
    counts.nPara1 = counts.nPara5 = absurd;
    counts.weldPosType = static_cast<TWeldPosType>(absurd);
    variants.push_back(counts);
  }
  return variants;
}

TEST(Robustness, absurdParametersAreHarmless) {
  for (const TWeldType type : detector_types::kAll) {
    const cv::Mat image = frameFor(type);
    TWeldParams usual = paramsFor(type);
    const TWeldLineRes first = detectWeldLineViaTracking(image, usual, {});
    for (TWeldParams& params : absurdVariants(type)) {
      expectSane(detectWeldLineViaTracking(image, params, {}), image.size());
      expectSane(detectWeldLineViaTracking(image, params, first), image.size());
    }
  }
}

TEST(Robustness, tinyAndFullImagesAreHarmless) {
  for (const TWeldType type : detector_types::kAll) {
    for (const cv::Size& size : {cv::Size(1, 1), {1, 480}, {640, 1}, {5, 5}, {10, 11}, {40, 12}, {12, 40}}) {
      for (const int grey : {0, 128, 255}) {
        for (const bool isTracking : {false, true}) {
          TWeldParams params = paramsFor(type);
          params.flagPara1 = params.flagPara2 = isTracking;
          TWeldLineRes prevRes;
          prevRes.isFound = isTracking;
          prevRes.stripePts = painted::linePoints(0, 20, 5.0);
          expectSane(detectWeldLineViaTracking(cv::Mat(size, CV_8UC1, cv::Scalar(grey)), params, prevRes), size);
        }
      }
    }
  }
}

TEST(Robustness, imagesThatAreViewsOfLargerOnesGiveTheSameResult) {
  for (const TWeldType type : detector_types::kAll) {
    const cv::Mat image = frameFor(type);
    cv::Mat larger(image.rows + 40, image.cols + 60, CV_8UC1, cv::Scalar(255));
    const cv::Mat view = larger(cv::Rect(30, 20, image.cols, image.rows));
    image.copyTo(view);
    TWeldParams params = paramsFor(type);
    const TWeldLineRes expected = detectWeldLineViaTracking(image, params, {});
    const TWeldLineRes result = detectWeldLineViaTracking(view, params, {});
    EXPECT_EQ(result.weldPos, expected.weldPos);
    EXPECT_EQ(result.stripePts, expected.stripePts);
  }
}

}  // namespace
