#include "support/painted_frame.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using TPoints = std::vector<cv::Point2f>;

constexpr int kCols = 200;
constexpr int kRows = 100;
constexpr float kRow = 50.0F;

// Bright between two columns, both included, dark elsewhere.
cv::Mat litBetween(int from, int to, int bright = 200, int dark = 0) {
  cv::Mat image(kRows, kCols, CV_8UC1, cv::Scalar(dark));
  image.colRange(from, to + 1).setTo(bright);
  return image;
}

cv::Mat litRow(int row) {
  cv::Mat image(kRows, kCols, CV_8UC1, cv::Scalar(0));
  image.row(row).colRange(0, 141).setTo(200);
  return image;
}

TPoints along(int fromX, int toX, float k = 0.0F, float b = kRow) {
  const auto slope = static_cast<double>(k);
  return painted::linePoints(fromX, toX, static_cast<double>(b) + slope * fromX, slope);
}

// From 3 px below the row.
cv::Point2f refine(const TPoints& support, float roughX, const cv::Mat& image, double minDrop = 30.0,
                   float k = 0.0F, float b = kRow) {
  TWeldParams params;
  params.dPara1 = minDrop;
  params.dPara2 = 5.0;  // distance of the support
  TBaseWeld weld;
  weld.setWeldParameters(params);
  return weld.modifySingleVGroovePos(support, {roughX, kRow + 3.0F}, k, b, image);
}

TEST(ModifySingleVGroovePos, findsWhereTheLightEndsAcrossTheNearerEndOfTheSupport) {
  const TPoints support = along(60, 141);
  TPoints leftwards;  // first point right of the last one
  TPoints there;      // and back: first and last point in one column
  for (int i = 0; i < 12; ++i) {
    leftwards.emplace_back(static_cast<float>(i < 6 ? 120 - i : 91 - i), kRow);
    there.emplace_back(static_cast<float>(i < 6 ? 100 + i : 111 - i), kRow);
  }
  cv::Mat twoSteps = litBetween(0, 119, 100);
  twoSteps.colRange(0, 100).setTo(200);
  cv::Mat ragged = litBetween(0, 140, 100, 70);
  ragged.col(143).setTo(72);
  TPoints aside = along(100, 110);
  aside.back().y += 5.0F;
  const cv::Mat lit = litBetween(0, 199);
  constexpr float kMarker = -1.0F;
  const struct {
    const char* name;
    TPoints support;
    float roughX;
    cv::Mat image;
    float expectedX;
    double minDrop = 30.0;
    float k = 0.0F;
    float b = kRow;
  } rows[] = {
      {"right end", support, 138, litBetween(0, 140), 140},
      {"left end", support, 63, litBetween(60, kCols - 1), 60},
      {"10 columns beyond the right end are still read", support, 150, litBetween(0, 147), 147},
      {"light that goes on", support, 138, lit, 138},
      {"beyond the left end: leftwards", support, 50, litBetween(55, kCols - 1), 55},
      {"middle of the support: leftwards", support, 101, litBetween(60, 140), 60},
      {"behind the middle: rightwards", support, 102, litBetween(60, 140), 140},
      {"between points 39 and 40 of 80", along(60, 140), 100, litBetween(60, 139), 60},
      {"between points 40 and 41 of 80", along(60, 140), 101, litBetween(60, 139), 139},
      {"right of a support that runs left", leftwards, 130, litBetween(125, 199), 125},
      {"left of a support that runs left", leftwards, 70, litBetween(0, 75), 75},
      {"both ends equally near: the last", there, 95, litBetween(80, 104), 104},
      {"stops at the image border", along(0, 40), 3, litBetween(4, 199), 4},
      {"first of equal drops", support, 102, twoSteps, 99},
      {"begins behind the first step", support, 125, twoSteps, 119},
      {"drop of 30", support, 138, litBetween(0, 140, 90, 60), 138},
      {"drop of 31", support, 138, litBetween(0, 140, 91, 60), 140},
      {"mean of 70.67 counts as 70", support, 138, ragged, 140, 29.5},
      {"support of 10", along(100, 110), 108, litBetween(0, 106), 106},
      {"support of 9", along(100, 109), 108, litBetween(0, 106), kMarker},
      {"point at the support distance", aside, 108, litBetween(0, 106), kMarker},
      {"columns 194..199 are six", along(180, 200), 204, lit, 204},
      {"columns 195..199 are five", along(180, 200), 205, lit, kMarker},
      {"no sample is looked at", along(180, 200), 204, lit, 194, -1.0},
      {"above the image: row 0", along(60, 141, 0, -30), 138, litRow(0), 140, 30, 0, -30},
      {"below the image: last row", along(60, 141, 0, 400), 138, litRow(kRows - 1), 140, 30, 0, 400},
      {"row 70.9 is 70", along(60, 141, 0, 70.9F), 138, litRow(70), 140, 30, 0, 70.9F},
      {"row -0.9 is 0", along(60, 141, 0, -0.9F), 138, litRow(0), 140, 30, 0, -0.9F},
      {"slope", along(60, 141, 0.25F, 20), 138, litBetween(0, 132), 132, 30, 0.25F, 20},
      {"empty image", support, 138, cv::Mat(0, 40, CV_8UC1), kMarker},
  };
  for (const auto& row : rows) {
    const cv::Point2f pos = refine(row.support, row.roughX, row.image, row.minDrop, row.k, row.b);
    EXPECT_EQ(pos.x, row.expectedX) << row.name;
    const float y = row.expectedX == row.roughX ? kRow + 3.0F : row.k * row.expectedX + row.b;
    EXPECT_EQ(pos.y, row.expectedX == kMarker ? kMarker : y) << row.name;
  }
}

TEST(ModifySingleVGroovePos, wildArgumentsAreHarmless) {
  const TPoints support = along(60, 141);
  const cv::Mat image = litBetween(0, 140);
  const cv::Point2f marker(-1.0F, -1.0F);
  for (const float wild : {std::nanf(""), std::numeric_limits<float>::infinity(), 3e38F, -3e38F, 2147483647.0F}) {
    for (const float roughX : {wild, -wild}) {
      const cv::Point2f pos = refine(support, roughX, image);
      EXPECT_TRUE(pos == marker || (pos.x >= 0.0F && pos.x < kCols) || !(std::abs(roughX) < 1e9F));
    }
    EXPECT_EQ(refine(support, 138.0F, image, 30.0, wild), marker);
    EXPECT_EQ(refine(TPoints(20, {wild, wild}), 138.0F, image), marker);
  }
  for (const int type : {CV_16UC1, CV_8UC2}) {
    EXPECT_THROW(refine(support, 138.0F, cv::Mat::zeros(kRows, kCols, type)), cv::Exception);
  }
}

}  // namespace
