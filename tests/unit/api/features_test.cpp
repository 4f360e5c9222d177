#include "zelFunctions.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <regex>
#include <string>
#include <vector>

namespace {

// The lines of debugging text that calcWeldFeatures gives for an image.
std::vector<std::string> reportsFor(const cv::Mat& image, TWeldFeatures& features) {
  std::vector<std::string> lines;
  zel::setDebugStringSink([&lines](const std::string& text) { lines.push_back(text); });
  features = calcWeldFeatures(image, TWeldParams{});
  zel::setDebugStringSink({});
  return lines;
}

void expectAllZero(const TWeldFeatures& features) {
  for (const float value : {features.leftVal, features.leftAg, features.rightVal, features.rightAg,
                            features.intersecAg, features.center.x, features.center.y, features.score}) {
    EXPECT_EQ(value, 0.0F);
  }
  EXPECT_FALSE(features.haveGap || features.featFlag1 || features.featFlag2);
}

TEST(CalcWeldFeatures, reportsOneLineInGbk) {
  for (const int type : {CV_8UC1, CV_8UC3, CV_8UC4}) {
    const cv::Mat image(30, 40, type, cv::Scalar::all(90));
    TWeldFeatures features;
    const std::vector<std::string> lines = reportsFor(image, features);
    expectAllZero(features);
    ASSERT_EQ(lines.size(), 1U);
    const std::string start =
        "\xBA\xB8\xB7\xEC\xB2\xCE\xCA\xFD"
        ":leftAg:0.000"
        "\xA3\xAC"
        "rightAg:0.000, intersecAg:0.000, haveGap:0, center:0.000, 0.000, score:0.000, costTime:";
    EXPECT_EQ(lines[0].substr(0, start.size()), start);
    EXPECT_TRUE(std::regex_match(lines[0].substr(start.size()), std::regex("[0-9]+")));
  }
}

TEST(CalcWeldFeatures, emptyImageGivesZerosAndNoReport) {
  for (const cv::Mat& image : {cv::Mat(), cv::Mat(0, 40, CV_8UC3), cv::Mat(30, 0, CV_8UC1)}) {
    TWeldFeatures features;
    EXPECT_TRUE(reportsFor(image, features).empty());
    expectAllZero(features);
  }
}

TEST(UpdateWeldParamByWeldFeature, scoreAboveThirtyTakesTheGapFlagAndNothingElse) {
  struct {
    float score;
    bool isTaken;
  } const rows[] = {{0.0F, false},
                    {30.0F, false},
                    {std::nextafter(30.0F, 31.0F), true},
                    {std::numeric_limits<float>::infinity(), true},
                    {std::numeric_limits<float>::quiet_NaN(), false}};
  for (const auto& row : rows) {
    for (const bool measured : {false, true}) {
      TWeldFeatures features;
      features.score = row.score;
      features.haveGap = measured;
      features.leftAg = 12.0F;
      TWeldParams params;
      params.haveGap = !measured;
      params.dPara1 = 77.0;
      params.weldType = TWeldType::corner;
      const TWeldParams updated = updateWeldParamByWeldFeature(features, params);
      EXPECT_EQ(updated.haveGap, row.isTaken ? measured : !measured) << row.score;
      EXPECT_EQ(updated.dPara1, 77.0);
      EXPECT_EQ(updated.weldType, TWeldType::corner);
    }
  }
}

}  // namespace
