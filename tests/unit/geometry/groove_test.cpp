#include "geometry/groove.h"

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
constexpr double kSupportPx = 5.0;
constexpr double kMinDrop = 30.0;

// Bright between two columns, both included, dark elsewhere.
cv::Mat litBetween(int from, int to, int bright = 200, int dark = 0) {
  cv::Mat image(kRows, kCols, CV_8UC1, cv::Scalar(dark));
  image.colRange(from, to + 1).setTo(bright);
  return image;
}

TPoints level(int fromX, int toX) {
  return painted::linePoints(fromX, toX, static_cast<double>(kRow));
}

cv::Point2f refine(const TPoints& support, float roughX, const cv::Mat& image, double minDrop = kMinDrop) {
  return weld::refineGroovePos(support, {roughX, kRow + 3.0F}, 0.0F, kRow, image, kSupportPx, minDrop);
}

TEST(RefineGroovePos, findsWhereTheLightEndsAcrossTheNearerEndOfTheSupport) {
  const TPoints support = level(60, 141);
  TPoints leftwards;  // first point right of the last one
  TPoints there;      // and back: first and last point in one column
  for (int i = 0; i < 12; ++i) {
    leftwards.emplace_back(static_cast<float>(i < 6 ? 120 - i : 91 - i), kRow);
    there.emplace_back(static_cast<float>(i < 6 ? 100 + i : 111 - i), kRow);
  }
  cv::Mat twoSteps = litBetween(0, 119, 100);
  twoSteps.colRange(0, 100).setTo(200);
  const struct {
    const char* name;
    TPoints support;
    float roughX;
    cv::Mat image;
    float expectedX;
  } rows[] = {
      {"right end", support, 138, litBetween(0, 140), 140},
      {"left end", support, 63, litBetween(60, kCols - 1), 60},
      {"10 columns beyond the right end are still read", support, 150, litBetween(0, 147), 147},
      {"light that goes on", support, 138, litBetween(0, kCols - 1), 138},
      {"beyond the left end: leftwards", support, 50, litBetween(55, kCols - 1), 55},
      {"middle of the support: leftwards", support, 101, litBetween(60, 140), 60},
      {"behind the middle: rightwards", support, 102, litBetween(60, 140), 140},
      {"between points 39 and 40 of 80", level(60, 140), 100, litBetween(60, 139), 60},
      {"between points 40 and 41 of 80", level(60, 140), 101, litBetween(60, 139), 139},
      {"right of a support that runs left", leftwards, 130, litBetween(125, 199), 125},
      {"left of a support that runs left", leftwards, 70, litBetween(0, 75), 75},
      {"both ends equally near: the last", there, 95, litBetween(80, 104), 104},
      {"stops at the image border", level(0, 40), 3, litBetween(4, 199), 4},
      {"first of equal drops", support, 102, twoSteps, 99},
      {"begins behind the first step", support, 125, twoSteps, 119},
  };
  for (const auto& row : rows) {
    const cv::Point2f pos = refine(row.support, row.roughX, row.image);
    EXPECT_EQ(pos.x, row.expectedX) << row.name;
    EXPECT_EQ(pos.y, row.expectedX == row.roughX ? kRow + 3.0F : kRow) << row.name;
  }
}

TEST(RefineGroovePos, dropMustExceedTheThresholdAfterTruncatedMeans) {
  EXPECT_EQ(refine(level(60, 141), 138.0F, litBetween(0, 140, 90, 60)).x, 138.0F);
  EXPECT_EQ(refine(level(60, 141), 138.0F, litBetween(0, 140, 91, 60)).x, 140.0F);
  cv::Mat ragged = litBetween(0, 140, 100, 70);
  ragged.col(143).setTo(72);  // mean 70.67 counts as 70
  EXPECT_EQ(refine(level(60, 141), 138.0F, ragged, 29.5).x, 140.0F);
}

TEST(RefineGroovePos, tenSupportPointsAndSixSamplesAreNeeded) {
  const TPoints ten = level(100, 110);
  const cv::Mat image = litBetween(0, 106);
  EXPECT_EQ(refine(ten, 108.0F, image).x, 106.0F);
  EXPECT_EQ(refine({ten.begin(), ten.end() - 1}, 108.0F, image), weld::kNoGroovePos);
  TPoints aside = ten;
  aside.back().y += 5.0F;  // exactly at the support distance
  EXPECT_EQ(refine(aside, 108.0F, image), weld::kNoGroovePos);

  const cv::Mat lit = litBetween(0, 199);
  EXPECT_EQ(refine(level(180, 200), 204.0F, lit), cv::Point2f(204.0F, kRow + 3.0F));  // 194..199: six
  EXPECT_EQ(refine(level(180, 200), 205.0F, lit), weld::kNoGroovePos);                // 195..199: five
  EXPECT_EQ(refine(level(180, 200), 204.0F, lit, -1.0), cv::Point2f(194.0F, kRow));   // no sample is looked at
}

TEST(RefineGroovePos, samplesLieOnTheLineInTruncatedRowsInsideTheImage) {
  const auto litRow = [](int row) {
    cv::Mat image(kRows, kCols, CV_8UC1, cv::Scalar(0));
    image.row(row).colRange(0, 141).setTo(200);
    return image;
  };
  const struct {
    float k, b;
    cv::Mat image;
    float endX;
  } rows[] = {{0, -30, litRow(0), 140},
              {0, 400, litRow(kRows - 1), 140},
              {0, 70.9F, litRow(70), 140},
              {0, -0.9F, litRow(0), 140},
              {0.25F, 20, litBetween(0, 132), 132}};
  for (const auto& row : rows) {
    const auto k = static_cast<double>(row.k);
    const TPoints support = painted::linePoints(60, 141, static_cast<double>(row.b) + k * 60, k);
    const cv::Point2f pos =
        weld::refineGroovePos(support, {138, 0}, row.k, row.b, row.image, kSupportPx, kMinDrop);
    EXPECT_EQ(pos, cv::Point2f(row.endX, row.k * row.endX + row.b)) << row.b;
  }
}

TEST(RefineGroovePos, wildArgumentsAreHarmless) {
  const TPoints support = level(60, 141);
  const cv::Mat image = litBetween(0, 140);
  for (const float wild : {std::nanf(""), std::numeric_limits<float>::infinity(), 3e38F, -3e38F, 2147483647.0F}) {
    for (const float roughX : {wild, -wild}) {
      const cv::Point2f pos = refine(support, roughX, image);
      EXPECT_TRUE(pos == weld::kNoGroovePos || (pos.x >= 0.0F && pos.x < kCols) || !(std::abs(roughX) < 1e9F));
    }
    EXPECT_EQ(weld::refineGroovePos(support, {138, 50}, wild, kRow, image, kSupportPx, kMinDrop),
              weld::kNoGroovePos);
    EXPECT_EQ(refine(TPoints(20, {wild, wild}), 138.0F, image), weld::kNoGroovePos);
  }
  EXPECT_THROW(refine(support, 138.0F, cv::Mat(kRows, kCols, CV_16UC1, cv::Scalar(0))), cv::Exception);
  EXPECT_THROW(refine(support, 138.0F, cv::Mat(kRows, kCols, CV_8UC2, cv::Scalar(0))), cv::Exception);
}

TEST(ModifySingleVGroovePos, takesSupportAndDropFromTheParameters) {
  const TPoints support = painted::linePoints(60, 141, static_cast<double>(kRow) + 4.0);
  TBaseWeld weld;
  TWeldParams params;
  const auto pos = [&] {
    weld.setWeldParameters(params);
    return weld.modifySingleVGroovePos(support, {138, 50}, 0.0F, kRow, litBetween(0, 140, 100));
  };
  EXPECT_EQ(pos().x, 140.0F);
  params.dPara1 = 100.0;
  EXPECT_EQ(pos().x, 138.0F);
  params.dPara2 = 4.0;
  EXPECT_EQ(pos(), weld::kNoGroovePos);
}

}  // namespace
