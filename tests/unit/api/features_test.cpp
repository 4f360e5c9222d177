#include "zelFunctions.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <cmath>
#include <regex>
#include <string>
#include <vector>

namespace {

TEST(CalcWeldFeatures, reportsZerosInOneLineInGbkButNothingOfAnEmptyImage) {
  const std::string line =
      "\xBA\xB8\xB7\xEC\xB2\xCE\xCA\xFD"
      ":leftAg:0.000"
      "\xA3\xAC"
      "rightAg:0.000, intersecAg:0.000, haveGap:0, center:0.000, 0.000, score:0.000, costTime:";
  std::vector<std::string> lines;
  zel::setDebugStringSink([&](const std::string& text) { lines.push_back(text); });
  for (const cv::Mat& image : {cv::Mat(0, 30, CV_8UC1), cv::Mat(40, 0, CV_8UC3), cv::Mat()})
    calcWeldFeatures(image, TWeldParams{});
  EXPECT_TRUE(lines.empty());
  for (const int type : {CV_8UC1, CV_8UC3, CV_8UC4}) {
    const TWeldFeatures f = calcWeldFeatures(cv::Mat(40, 30, type, cv::Scalar::all(90)), TWeldParams{});
    for (const float value :
         {f.leftVal, f.leftAg, f.rightVal, f.rightAg, f.intersecAg, f.score, f.center.x, f.center.y})
      EXPECT_EQ(value, 0.0F);
    EXPECT_FALSE(f.haveGap || f.featFlag1 || f.featFlag2);
    EXPECT_EQ(lines.back().substr(0, line.size()), line);
    EXPECT_TRUE(std::regex_match(lines.back().substr(line.size()), std::regex("[0-9]+")));
  }
  EXPECT_EQ(lines.size(), 3U);
  zel::setDebugStringSink({});
}

TEST(UpdateWeldParamByWeldFeature, scoreAboveThirtyTakesTheGapFlagAndNothingElse) {
  const std::pair<float, bool> rows[] = {
      {0.0F, false}, {30.0F, false}, {std::nextafter(30.0F, 31.0F), true}, {INFINITY, true}, {NAN, false}};
  for (const auto& [score, isTaken] : rows) {
    for (const bool measured : {false, true}) {
      TWeldFeatures features;
      features.score = score;
      features.haveGap = measured;
      features.leftAg = 12.0F;
      TCornerSettings settings;
      settings.allowsGap = !measured;
      settings.solidShare = 0.7;
      const TWeldParams updated = updateWeldParamByWeldFeature(features, settings.params());
      EXPECT_EQ(updated.haveGap, isTaken ? measured : !measured) << score;
      EXPECT_EQ(updated.dPara10, 0.7);
      EXPECT_EQ(updated.weldType, TWeldType::corner);
    }
  }
}

}  // namespace
