#include "support/detector_types.h"
#include "support/painted_frame.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <cstring>
#include <limits>
#include <vector>

namespace {

using detector_types::frameFor;
using detector_types::paramsFor;

TWeldLineRes previousWithStripe() {
  TWeldLineRes prevRes;
  prevRes.isFound = true;
  prevRes.stripePts = painted::linePoints(20, 620, 240.0);
  return prevRes;
}

void expectEmptyResult(const TWeldLineRes& result, int type) {
  EXPECT_FALSE(result.isFound) << type;
  EXPECT_EQ(result.weldPos, cv::Point2f()) << type;
  EXPECT_TRUE(result.stripePts.empty()) << type;
  EXPECT_EQ(std::vector<double>({result.auxVal1, result.auxVal2, result.auxVal3, result.auxVal4, result.trackVal}),
            std::vector<double>(5, 0.0))
      << type;
}

void expectSameResult(const TWeldLineRes& a, const TWeldLineRes& b) {
  EXPECT_EQ(a.isFound, b.isFound);
  EXPECT_EQ(a.weldPos, b.weldPos);
  EXPECT_EQ(a.stripePts, b.stripePts);
  EXPECT_EQ(a.auxVal1, b.auxVal1);
  EXPECT_EQ(a.trackVal, b.trackVal);
}

TEST(Dispatch, everyDetectorTypeFindsItsJoint) {
  for (const TWeldType type : detector_types::kAll) {
    TWeldParams params = paramsFor(type);
    TWeldLineRes prevRes;
    prevRes.stripePts.assign(500, cv::Point2f());  // presence compares with a number of points
    const TWeldLineRes result = detectWeldLineViaTracking(frameFor(type), params, prevRes);
    EXPECT_TRUE(result.isFound) << static_cast<int>(type);
    EXPECT_GT(result.stripePts.size(), 100U) << static_cast<int>(type);
  }
}

TEST(Dispatch, typesWithoutDetectorGiveTheEmptyResult) {
  constexpr int kLowest = std::numeric_limits<int>::min();
  for (const int type : {kLowest, -1, 3, 5, 6, 7, 8, 9, 11, 1000, std::numeric_limits<int>::max()}) {
    TWeldParams params = paramsFor(static_cast<TWeldType>(type));
    expectEmptyResult(detectWeldLineViaTracking(painted::gapFrame(), params, previousWithStripe()), type);
  }
  TWeldParams untouched;
  expectEmptyResult(detectWeldLineViaTracking(painted::gapFrame(), untouched, {}), -2);
}

TEST(Dispatch, colourImagesGiveTheResultOfTheirGreyConversion) {
  for (const TWeldType type : detector_types::kAll) {
    const cv::Mat grey = frameFor(type);
    const cv::Mat weak = grey * 0.7;
    cv::Mat bgr;
    cv::Mat bgra;
    cv::merge(std::vector<cv::Mat>{weak, grey, cv::Mat(grey * 0.9)}, bgr);
    cv::merge(std::vector<cv::Mat>{weak, grey, cv::Mat(grey * 0.9), cv::Mat(255 - grey)}, bgra);
    cv::Mat converted;
    cv::cvtColor(bgr, converted, cv::COLOR_BGR2GRAY);
    TWeldParams params = paramsFor(type);
    const TWeldLineRes expected = detectWeldLineViaTracking(converted, params, {});
    ASSERT_FALSE(expected.stripePts.empty());
    expectSameResult(detectWeldLineViaTracking(bgr, params, {}), expected);
    expectSameResult(detectWeldLineViaTracking(bgra, params, {}), expected);
    const TWeldLineRes tracked = detectWeldLineViaTracking(converted, params, expected);
    expectSameResult(detectWeldLineViaTracking(bgr, params, expected), tracked);
    expectSameResult(detectWeldLineViaTracking(bgra, params, expected), tracked);
  }
}

TEST(Dispatch, callerKeepsItsImageAndParameters) {
  for (const TWeldType type : detector_types::kAll) {
    cv::Mat image;
    cv::cvtColor(frameFor(type), image, cv::COLOR_GRAY2BGR);
    const cv::Mat before = image.clone();
    TWeldParams params = paramsFor(type);
    TWeldParams paramsBefore;
    std::memcpy(&paramsBefore, &params, sizeof(params));
    detectWeldLineViaTracking(image, params, previousWithStripe());
    ASSERT_EQ(image.type(), CV_8UC3);
    EXPECT_EQ(cv::norm(image, before, cv::NORM_INF), 0.0);
    EXPECT_EQ(std::memcmp(&paramsBefore, &params, sizeof(params)), 0);
  }
}

TEST(Dispatch, emptyImagesGiveTheEmptyResultForEveryType) {
  for (const cv::Mat& image : {cv::Mat(), cv::Mat(480, 0, CV_8UC3), cv::Mat(0, 640, CV_16UC4)}) {
    for (int type = -1; type <= 12; ++type) {
      TWeldParams params = paramsFor(static_cast<TWeldType>(type));
      expectEmptyResult(detectWeldLineViaTracking(image, params, previousWithStripe()), type);
    }
  }
}

TEST(Dispatch, imagesThatNoDetectorReadsRaiseAnException) {
  const int sizes[] = {20, 30, 40};
  std::vector<cv::Mat> images;
  for (const int type : {CV_16UC1, CV_8UC2, CV_32FC1, CV_16UC3, CV_8SC1})
    images.emplace_back(480, 640, type, cv::Scalar(9));
  for (const int type : {CV_8UC1, CV_8UC3, CV_8UC4}) images.emplace_back(3, sizes, type, cv::Scalar(9));
  for (const cv::Mat& image : images) {
    for (const TWeldType type : detector_types::kAll) {
      for (const bool isTracking : {false, true}) {
        for (const bool flag : {false, true}) {
          TWeldParams params = paramsFor(type);
          params.flagPara1 = flag;
          params.flagPara2 = flag;
          const TWeldLineRes prevRes = isTracking ? previousWithStripe() : TWeldLineRes{};
          EXPECT_THROW(detectWeldLineViaTracking(image, params, prevRes), cv::Exception)
              << image.type() << " " << static_cast<int>(type) << isTracking << flag;
        }
      }
    }
  }
}

}  // namespace
