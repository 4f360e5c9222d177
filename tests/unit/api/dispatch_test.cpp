#include "support/checksum.h"
#include "support/detector_types.h"
#include "support/reel.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <cstring>
#include <limits>
#include <vector>

namespace {

using detector_types::frameFor;
using detector_types::paramsFor;

TWeldLineRes previousWithStripe() {
  TWeldLineRes previous;
  previous.isFound = true;
  previous.stripePts = painted::linePoints(20, 620, 240.0);
  return previous;
}

void expectEmptyResult(const cv::Mat& image, int type) {
  TWeldParams params = paramsFor(static_cast<TWeldType>(type));
  const TWeldLineRes result = detectWeldLineViaTracking(image, params, previousWithStripe());
  EXPECT_EQ(checksumOf(result), checksumOf(TWeldLineRes())) << type;
}

TEST(Dispatch, everyDetectorFindsItsJoint) {
  for (const auto& [joint, type] : scenes::detectedJoints()) {
    TWeldParams params = scenes::weldParamsFor(joint);
    const cv::Mat image = scenes::renderScene(scenes::randomScene(joint, scenes::TLevel::clean, 8)).image;
    TWeldLineRes previous;
    previous.stripePts.assign(1000, cv::Point2f());  // presence compares with a number of points
    const TWeldLineRes result = detectWeldLineViaTracking(image, params, previous);
    EXPECT_TRUE(result.isFound) << static_cast<int>(joint);
    EXPECT_GT(result.stripePts.size(), 100U) << static_cast<int>(joint);
  }
}

TEST(Dispatch, emptyImagesAndTypesWithoutDetectorGiveTheEmptyResult) {
  using TLimits = std::numeric_limits<int>;
  for (const int type : {TLimits::min(), -1, 3, 11, 1000, TLimits::max()})
    expectEmptyResult(painted::gapFrame(), type);
  for (const TWeldJoint& joint : weldJoints()) {
    for (const cv::Mat& image : {cv::Mat(), cv::Mat(480, 0, CV_8UC3), cv::Mat(0, 640, CV_16UC4)})
      expectEmptyResult(image, static_cast<int>(joint.type));
  }
}

TEST(Dispatch, colourImagesAndViewsGiveTheResultOfTheirGreyCopyAndStayAsTheyAre) {
  for (const TWeldType type : detector_types::kAll) {
    const cv::Mat grey = frameFor(type);
    std::vector<cv::Mat> planes{grey * 0.7, grey, grey * 0.9};
    cv::Mat bgr;
    cv::merge(planes, bgr);
    planes.emplace_back(255 - grey);
    cv::Mat bgra;
    cv::merge(planes, bgra);
    cv::Mat converted;
    cv::cvtColor(bgr, converted, cv::COLOR_BGR2GRAY);
    const cv::Mat larger(grey.rows + 40, grey.cols + 60, CV_8UC1, cv::Scalar(255));
    const cv::Mat view = larger(cv::Rect(30, 20, grey.cols, grey.rows));
    converted.copyTo(view);
    TWeldParams params = paramsFor(type);
    const TWeldParams paramsBefore = params;
    TWeldLineRes previous;
    for (int frame = 0; frame < 2; ++frame) {  // a first detection, and one that tracks
      const TWeldLineRes expected = detectWeldLineViaTracking(converted, params, previous);
      ASSERT_FALSE(expected.stripePts.empty());
      for (const cv::Mat& image : {bgr, bgra, view}) {
        const cv::Mat before = image.clone();
        EXPECT_EQ(checksumOf(detectWeldLineViaTracking(image, params, previous)), checksumOf(expected));
        EXPECT_EQ(cv::norm(image, before, cv::NORM_INF), 0.0);
      }
      previous = expected;
    }
    EXPECT_EQ(std::memcmp(&paramsBefore, &params, sizeof(params)), 0);
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
      for (const bool flag : {false, true}) {
        TWeldParams params = paramsFor(type);
        params.flagPara1 = params.flagPara2 = flag;
        for (const TWeldLineRes& previous : {TWeldLineRes(), previousWithStripe()})
          EXPECT_THROW(detectWeldLineViaTracking(image, params, previous), cv::Exception) << image.type();
      }
    }
  }
}

}  // namespace
