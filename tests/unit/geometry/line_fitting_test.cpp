#include "geometry/line_fitting.h"

#include "support/painted_frame.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using TPoints = std::vector<cv::Point2f>;
using TIntPoints = std::vector<cv::Point>;

constexpr double kTolPx = 2.0;

TPoints repeatedColumns(int count, float firstX, float stepX) {
  TPoints points;
  for (int i = 0; i < count; ++i) points.emplace_back(firstX + stepX * static_cast<float>(i), 50.0F);
  return points;
}

TEST(LineSelection, pointExactlyAtTheToleranceIsNeitherNearNorFar) {
  // The line 3x - 4y = 0: its distances are exact fifths.
  const TPoints points{{0, 2.4F}, {0, 2.5F}, {0, 2.6F}, {4, 3}, {0, -2.5F}};
  EXPECT_EQ(weld::selectLineInliers(0.75, 0.0, 2.0, points), (TPoints{{0, 2.4F}, {4, 3}}));
  EXPECT_EQ(weld::selectLineOutliers(0.75, 0.0, 2.0, points), (TPoints{{0, 2.6F}}));
  const TIntPoints whole{{0, 5}, {0, 4}, {0, 6}, {8, 6}};
  EXPECT_EQ(weld::selectLineInliers(0.75, 0.0, 4.0, whole), (TIntPoints{{0, 4}, {8, 6}}));
  EXPECT_EQ(weld::lineShare(0.75, 0.0, 4.0, whole), 0.5);
  EXPECT_EQ(weld::lineShare(0.75, 0.0, 4.0, {}), 0.0);
}

TEST(ToIntPoints, truncatesTowardZeroAndSendsWildOnesOutside) {
  constexpr int kOutside = std::numeric_limits<int>::min();
  const TPoints points{{1.9F, -1.9F}, {-0.5F, 0.5F}, {std::nanf(""), 7.0F}, {3e9F, -3e9F}};
  EXPECT_EQ(weld::toIntPoints(points), (TIntPoints{{1, -1}, {0, 0}, {kOutside, 7}, {kOutside, kOutside}}));
}

TEST(ThinPointsByX, keepsPointsAStepApart) {
  const struct {
    const char* name;
    int count;
    float firstX, stepX;
    std::size_t expectedCount;
    float expectedThird, expectedLast;
  } rows[] = {
      {"under 100 points: all", 99, 0, 20, 99, 40, 1960},
      {"100 points over less than 100 px: step 0", 100, 0, 0.9F, 100, 1.8F, 89.1F},
      {"step 0 stops at 101", 250, 0, 0.25F, 101, 0.5F, 25},
      {"whole step of a long list stops at 101", 1280, 0, 1, 101, 24, 1200},
      {"leftwards", 300, 600, -2, 100, 588, 6},
      {"against the truncated last column", 200, 0.75F, 1.5F, 101, 5.25F, 299.25F},
  };
  for (const auto& row : rows) {
    const TPoints thinned = weld::thinPointsByX(repeatedColumns(row.count, row.firstX, row.stepX));
    ASSERT_EQ(thinned.size(), row.expectedCount) << row.name;
    EXPECT_EQ(thinned[2].x, row.expectedThird) << row.name;
    EXPECT_EQ(thinned.back().x, row.expectedLast) << row.name;
  }
}

TEST(FindALine, rangeNeedsTenIndicesInsideTheList) {
  const TPoints points = painted::linePoints(0, 40, 30.0, 0.5);
  const struct {
    int startIdx, endIdx;
    bool isValid;
  } rows[] = {{5, 14, false},  {5, 15, true},   {0, 10, true},
              {30, 40, true},  {31, 41, false}, {40, 50, false},
              {20, 10, false}, {0, 0, false},   {0, std::numeric_limits<int>::max(), false}};
  for (const auto& row : rows) {
    const TLinePara line = TBaseWeld().findALine(points, row.startIdx, row.endIdx);
    EXPECT_EQ(line.isValid, row.isValid) << row.startIdx << ".." << row.endIdx;
    EXPECT_EQ(line.inlierPts.size(), row.isValid ? 40U : 0U);
  }
}

TEST(FindALine, wholeListWithoutLineReturnsAllPoints) {
  const TPoints nine = painted::linePoints(0, 9, 30.0);
  const TPoints vertical(30, {12.0F, 40.0F});
  for (const TPoints& points : {nine, vertical}) {
    for (const auto& [startIdx, endIdx] : {std::pair{-1, -1}, {-1, 5}, {0, -1}}) {
      const TLinePara line = TBaseWeld().findALine(points, startIdx, endIdx);
      EXPECT_FALSE(line.isValid);
      EXPECT_EQ(line.inlierPts, points);
      EXPECT_EQ(line.inlierRatio, 0.0);
    }
  }
  EXPECT_TRUE(TBaseWeld().findALine(painted::linePoints(0, 10, 30.0), -1, -1).isValid);
}

TEST(FindALine, rangeIsRoundedWhileTheRestIsTruncated) {
  TBaseWeld weld;
  TWeldParams params;
  params.dPara4 = 0.5;
  weld.setWeldParameters(params);
  const TPoints points = painted::linePoints(0, 40, 10.6);
  // The whole list is fitted at 10: every point is 0.6 away. The range is fitted first at 11, then at 10.
  for (const auto& [startIdx, endIdx, ratio] : {std::tuple{-1, -1, 0.0}, {0, 40, 1.0}}) {
    const TLinePara line = weld.findALine(points, startIdx, endIdx);
    EXPECT_TRUE(line.isValid);
    EXPECT_NEAR(line.b, 10.0, 1e-9);
    EXPECT_EQ(line.inlierRatio, ratio);
  }
}

TEST(FindALine, rangeTakesInliersFromTheWholeList) {
  const TPoints points = painted::joined(painted::linePoints(0, 60, 30.0), painted::linePoints(60, 80, 90.0));
  const TLinePara line = TBaseWeld().findALine(points, 0, 20);
  EXPECT_EQ(line.inlierPts.size(), 60U);
  EXPECT_EQ(line.inlierRatio, 0.75);
}

TEST(FindALineRansac, acceptsAShareEqualToTheMinimum) {
  TPoints points = painted::linePoints(0, 60, 100.0, 0.25);
  for (int i = 0; i < 40; ++i)
    points.emplace_back(60.0F + static_cast<float>(i), 300.0F + static_cast<float>((i * 37) % 97));
  for (const auto& [minFitRatio, isValid] :
       {std::pair{0.6, true}, {std::nextafter(0.6, 1.0), false}, {0.0, true}, {-1.0, true}}) {
    const TLinePara line = TBaseWeld().findALineRansac(-45.0, 45.0, kTolPx, minFitRatio, points);
    EXPECT_EQ(line.isValid, isValid) << minFitRatio;
    EXPECT_NEAR(line.k, 0.25, 0.02);
    EXPECT_EQ(line.inlierRatio, 0.6);
    EXPECT_EQ(line.inlierPts.size(), 60U);
  }
}

TEST(FindALineRansac, findsOnlyLinesInsideTheAnglesInEitherOrder) {
  const struct {
    double fromDeg, toDeg;
    int count;
    bool isFound;
  } rows[] = {{20.0, 30.0, 200, true},   {30.0, 20.0, 200, true}, {27.5, 45.0, 200, false},
              {-45.0, 25.5, 200, false}, {20.0, 30.0, 10, true},  {20.0, 30.0, 9, false}};
  for (const auto& row : rows) {
    const TPoints points = painted::linePoints(0, row.count, 100.0, 0.5);  // 26.6 degrees
    EXPECT_EQ(TBaseWeld().findALineRansac(row.fromDeg, row.toDeg, kTolPx, 0.9, points).isValid, row.isFound)
        << row.fromDeg << ".." << row.toDeg << " " << row.count;
  }
}

TEST(CalcFitPercent, emptyListLeavesTheShareAloneAndFloatsAreTruncated) {
  const TBaseWeld weld;
  TIntPoints inliers{{1, 1}};
  double percent = 0.125;
  EXPECT_FALSE(weld.calcFitPercent(TIntPoints{}, inliers, 0.0, 10.0, 1.0, percent));
  EXPECT_EQ(percent, 0.125);
  EXPECT_TRUE(inliers.empty());
  EXPECT_TRUE(weld.calcFitPercent(TPoints{{3.7F, 10.9F}, {4.2F, 11.0F}}, inliers, 0.0, 10.0, 1.0, percent));
  EXPECT_EQ(percent, 0.5);
  EXPECT_EQ(inliers, (TIntPoints{{3, 10}}));
}

TEST(CalcDropFeet, footIsTheNearestPointOfTheLine) {
  const struct {
    double k, b;
    cv::Point2f point, foot;
  } rows[] = {{1.0, 0.0, {0, 10}, {5, 5}}, {-1.0, 10.0, {10, 10}, {5, 5}}, {0.75, 0.0, {0, 6.25F}, {3, 2.25F}}};
  TLinePara line;
  for (const auto& row : rows) {
    line.k = row.k;
    line.b = row.b;
    EXPECT_LT(cv::norm(TBaseWeld().calcDropFeet(line, row.point) - row.foot), 1e-4) << row.k;
  }
  line.k = 0.0;
  EXPECT_NEAR(TBaseWeld().calcDropFeet(line, {320, 10}).x, 320.0F, 0.01F) << "a level line divides by no zero";
}

}  // namespace
