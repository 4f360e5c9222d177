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

cv::Point2f refine(const TPoints& support, float roughX, const cv::Mat& image, double minDrop = kMinDrop) {
  return weld::refineGroovePos(support, {roughX, kRow + 3.0F}, 0.0F, kRow, image, kSupportPx, minDrop);
}

TEST(RefineGroovePos, findsWhereTheLightEndsOnEitherSide) {
  const TPoints support = painted::linePoints(60, 141, static_cast<double>(kRow));
  const struct {
    const char* name;
    float roughX;
    cv::Mat image;
    cv::Point2f expected;
  } rows[] = {
      {"right end", 138.0F, litBetween(0, 140), {140, kRow}},
      {"left end", 63.0F, litBetween(60, kCols - 1), {60, kRow}},
      {"10 columns beyond the right end are still read", 150.0F, litBetween(0, 147), {147, kRow}},
      {"light that goes on", 138.0F, litBetween(0, kCols - 1), {138, kRow + 3.0F}},
      {"beyond the left end: leftwards", 50.0F, litBetween(55, kCols - 1), {55, kRow}},
      {"middle of the support: leftwards", 101.0F, litBetween(60, 140), {60, kRow}},
      {"behind the middle: rightwards", 102.0F, litBetween(60, 140), {140, kRow}},
  };
  for (const auto& row : rows) EXPECT_EQ(refine(support, row.roughX, row.image), row.expected) << row.name;
}

TEST(RefineGroovePos, middleOfAnEvenSupportRunsToTheLast) {
  const TPoints support = painted::linePoints(60, 140, static_cast<double>(kRow));
  EXPECT_EQ(refine(support, 100.0F, litBetween(60, 139)).x, 60.0F);   // between points 39 and 40 of 80
  EXPECT_EQ(refine(support, 101.0F, litBetween(60, 139)).x, 139.0F);  // between points 40 and 41
}

TEST(RefineGroovePos, positionBesideTheSupportTakesTheNearerEndAndOnATieTheLast) {
  TPoints leftwards;  // first point right of the last one
  TPoints there;      // and back: first and last point in one column
  for (int i = 0; i < 12; ++i) {
    leftwards.emplace_back(static_cast<float>(i < 6 ? 120 - i : 91 - i), kRow);
    there.emplace_back(static_cast<float>(i < 6 ? 100 + i : 111 - i), kRow);
  }
  EXPECT_EQ(refine(leftwards, 130.0F, litBetween(125, 199)).x, 125.0F);
  EXPECT_EQ(refine(leftwards, 70.0F, litBetween(0, 75)).x, 75.0F);
  EXPECT_EQ(refine(there, 95.0F, litBetween(80, 104)).x, 104.0F);
}

TEST(RefineGroovePos, dropMustExceedTheThresholdAfterTruncatedMeans) {
  const TPoints support = painted::linePoints(60, 141, static_cast<double>(kRow));
  EXPECT_EQ(refine(support, 138.0F, litBetween(0, 140, 90, 60)).x, 138.0F);
  EXPECT_EQ(refine(support, 138.0F, litBetween(0, 140, 91, 60)).x, 140.0F);
  cv::Mat ragged = litBetween(0, 140, 100, 70);
  ragged.col(143).setTo(72);  // mean 70.67 counts as 70
  EXPECT_EQ(refine(support, 138.0F, ragged, 29.5).x, 140.0F);
}

TEST(RefineGroovePos, firstOfEqualDropsAlongTheScanWins) {
  const TPoints support = painted::linePoints(60, 141, static_cast<double>(kRow));
  cv::Mat twoSteps(kRows, kCols, CV_8UC1, cv::Scalar(0));
  twoSteps.colRange(0, 100).setTo(200);
  twoSteps.colRange(100, 120).setTo(100);
  EXPECT_EQ(refine(support, 102.0F, twoSteps).x, 99.0F);   // 200 to 100 at 99|100, 100 to 0 at 119|120
  EXPECT_EQ(refine(support, 125.0F, twoSteps).x, 119.0F);  // begins behind the first step
}

TEST(RefineGroovePos, tenSupportPointsAndSixSamplesAreNeeded) {
  const TPoints ten = painted::linePoints(100, 110, static_cast<double>(kRow));
  const cv::Mat image = litBetween(0, 106);
  EXPECT_EQ(refine(ten, 108.0F, image).x, 106.0F);
  EXPECT_EQ(refine({ten.begin(), ten.end() - 1}, 108.0F, image), weld::kNoGroovePos);
  TPoints aside = ten;
  aside.back().y += 5.0F;  // exactly at the support distance
  EXPECT_EQ(refine(aside, 108.0F, image), weld::kNoGroovePos);

  // Rightwards from column 188 or more: the image border leaves 12 samples or fewer.
  const TPoints atBorder = painted::linePoints(180, 200, static_cast<double>(kRow));
  const cv::Mat dark = litBetween(0, 199);
  EXPECT_EQ(refine(atBorder, 204.0F, dark), cv::Point2f(204.0F, kRow + 3.0F));  // 194..199: six
  EXPECT_EQ(refine(atBorder, 205.0F, dark), weld::kNoGroovePos);                // 195..199: five
  EXPECT_EQ(refine(atBorder, 204.0F, dark, -1.0), cv::Point2f(194.0F, kRow));   // no sample is looked at
}

TEST(RefineGroovePos, scanStopsAtTheBordersAndRowsAreClamped) {
  const TPoints atLeft = painted::linePoints(0, 40, static_cast<double>(kRow));
  EXPECT_EQ(refine(atLeft, 3.0F, litBetween(4, 199)).x, 4.0F);
  const struct {
    float k;
    float b;
    int row;
  } rows[] = {{0.0F, -30.0F, 0}, {0.0F, 400.0F, kRows - 1}, {0.0F, 70.9F, 70}, {0.0F, -0.9F, 0}};
  for (const auto& row : rows) {
    cv::Mat image(kRows, kCols, CV_8UC1, cv::Scalar(0));
    image.row(row.row).colRange(0, 141).setTo(200);
    const TPoints support = painted::linePoints(60, 141, static_cast<double>(row.b));
    const cv::Point2f pos = weld::refineGroovePos(support, {138, 0}, row.k, row.b, image, kSupportPx, kMinDrop);
    EXPECT_EQ(pos, cv::Point2f(140, row.b)) << row.b;
  }
}

TEST(RefineGroovePos, movesAlongASlopedLine) {
  const float k = 0.25F;
  const float b = 20.0F;
  const TPoints support = painted::linePoints(60, 141, 35.0, 0.25);
  const cv::Point2f pos =
      weld::refineGroovePos(support, {138, 54}, k, b, litBetween(0, 132), kSupportPx, kMinDrop);
  EXPECT_EQ(pos, cv::Point2f(132, k * 132 + b));
}

TEST(RefineGroovePos, wildArgumentsAreHarmless) {
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  const TPoints support = painted::linePoints(60, 141, static_cast<double>(kRow));
  const cv::Mat image = litBetween(0, 140);
  for (const float wild : {kNaN, std::numeric_limits<float>::infinity(), 3e38F, -3e38F, 2147483647.0F}) {
    for (const float roughX : {wild, -wild}) {
      const cv::Point2f pos = refine(support, roughX, image);
      EXPECT_TRUE(pos == weld::kNoGroovePos || (pos.x >= 0.0F && pos.x < kCols) || !(std::abs(roughX) < 1e9F));
    }
    EXPECT_EQ(weld::refineGroovePos(support, {138, 50}, wild, kRow, image, kSupportPx, kMinDrop),
              weld::kNoGroovePos);
    EXPECT_EQ(weld::refineGroovePos(TPoints(20, {wild, wild}), {138, 50}, 0.0F, kRow, image, kSupportPx, kMinDrop),
              weld::kNoGroovePos);
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
