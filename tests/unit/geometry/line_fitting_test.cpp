#include "geometry/line_fitting.h"

#include "support/painted_frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
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

std::vector<float> columnsOf(const TPoints& points) {
  std::vector<float> columns;
  for (const cv::Point2f& p : points) columns.push_back(p.x);
  return columns;
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
    TPoints points;
    std::size_t expectedCount;
    std::vector<float> expectedStart;
    float expectedLast;
  } rows[] = {
      {"under 100 points: all", repeatedColumns(99, 0, 20), 99, {0, 20, 40}, 1960},
      {"100 points over less than 100 px: step 0", repeatedColumns(100, 0, 0.9F), 100, {0, 0.9F}, 89.1F},
      {"step 0 stops at 101", repeatedColumns(250, 0, 0.25F), 101, {0, 0.25F}, 25},
      {"whole step of a long list stops at 101", repeatedColumns(1280, 0, 1), 101, {0, 12, 24}, 1200},
      {"leftwards", repeatedColumns(300, 600, -2), 100, {600, 594, 588}, 6},
      {"against the truncated last column",
       repeatedColumns(200, 0.75F, 1.5F),
       101,
       {0.75F, 2.25F, 5.25F, 8.25F},
       299.25F},
  };
  for (const auto& row : rows) {
    const std::vector<float> columns = columnsOf(weld::thinPointsByX(row.points));
    ASSERT_GE(columns.size(), row.expectedStart.size()) << row.name;
    EXPECT_TRUE(std::equal(row.expectedStart.begin(), row.expectedStart.end(), columns.begin())) << row.name;
    EXPECT_EQ(columns.size(), row.expectedCount) << row.name;
    EXPECT_EQ(columns.back(), row.expectedLast) << row.name;
  }
}

TEST(FindALine, rangeNeedsTenIndicesInsideTheList) {
  const TPoints points = painted::linePoints(0, 40, 30.0, 0.5);
  const TBaseWeld weld;
  const struct {
    int startIdx;
    int endIdx;
    bool isValid;
  } rows[] = {{5, 14, false},  {5, 15, true},
              {0, 10, true},   {30, 40, true},
              {31, 41, false}, {0, 40, true},
              {40, 50, false}, {20, 10, false},
              {0, 0, false},   {0, std::numeric_limits<int>::max(), false}};
  for (const auto& row : rows) {
    const TLinePara line = weld.findALine(points, row.startIdx, row.endIdx);
    EXPECT_EQ(line.isValid, row.isValid) << row.startIdx << ".." << row.endIdx;
    EXPECT_EQ(line.inlierPts.size(), row.isValid ? 40U : 0U);
  }
  EXPECT_FALSE(weld.findALine(painted::linePoints(0, 9, 30.0), 0, 9).isValid);
}

TEST(FindALine, wholeListWithTooFewPointsReturnsThemAll) {
  const TBaseWeld weld;
  const TPoints nine = painted::linePoints(0, 9, 30.0);
  for (const auto& [startIdx, endIdx] : {std::pair{-1, -1}, {-1, 5}, {0, -1}}) {
    const TLinePara line = weld.findALine(nine, startIdx, endIdx);
    EXPECT_FALSE(line.isValid);
    EXPECT_EQ(line.inlierPts, nine);
    EXPECT_EQ(line.inlierRatio, 0.0);
  }
  EXPECT_TRUE(weld.findALine(painted::linePoints(0, 10, 30.0), -1, -1).isValid);
  const TPoints vertical(30, {12.0F, 40.0F});
  EXPECT_EQ(weld.findALine(vertical, -1, -1).inlierPts, vertical);
}

TEST(FindALine, rangeIsRoundedWhileTheRestIsTruncated) {
  TBaseWeld weld;
  TWeldParams params;
  params.dPara4 = 0.5;
  weld.setWeldParameters(params);
  const TPoints points = painted::linePoints(0, 40, 10.6);

  const TLinePara whole = weld.findALine(points, -1, -1);  // fitted at 10: every point is 0.6 away
  EXPECT_TRUE(whole.isValid);
  EXPECT_NEAR(whole.b, 10.0, 1e-9);
  EXPECT_EQ(whole.inlierRatio, 0.0);

  const TLinePara range = weld.findALine(points, 0, 40);  // first at 11, then at 10
  EXPECT_TRUE(range.isValid);
  EXPECT_NEAR(range.b, 10.0, 1e-9);
  EXPECT_EQ(range.inlierRatio, 1.0);
}

TEST(FindALine, rangeTakesInliersFromTheWholeList) {
  TPoints points = painted::linePoints(0, 60, 30.0);
  const TPoints far = painted::linePoints(60, 80, 90.0);
  points.insert(points.end(), far.begin(), far.end());
  const TLinePara line = TBaseWeld().findALine(points, 0, 20);
  EXPECT_EQ(line.inlierPts.size(), 60U);
  EXPECT_EQ(line.inlierRatio, 0.75);
}

TEST(FindALineRansac, acceptsAShareEqualToTheMinimum) {
  TPoints points = painted::linePoints(0, 60, 100.0, 0.25);
  for (int i = 0; i < 40; ++i)
    points.emplace_back(60.0F + static_cast<float>(i), 300.0F + static_cast<float>((i * 37) % 97));
  const TBaseWeld weld;
  const struct {
    double minFitRatio;
    bool isValid;
  } rows[] = {{0.6, true}, {std::nextafter(0.6, 1.0), false}, {0.0, true}, {-1.0, true}};
  for (const auto& row : rows) {
    const TLinePara line = weld.findALineRansac(-45.0, 45.0, kTolPx, row.minFitRatio, points);
    EXPECT_EQ(line.isValid, row.isValid) << row.minFitRatio;
    EXPECT_NEAR(line.k, 0.25, 0.02);
    EXPECT_EQ(line.inlierRatio, 0.6);
    EXPECT_EQ(line.inlierPts.size(), 60U);
  }
}

TEST(FindALineRansac, findsOnlyLinesInsideTheAnglesInEitherOrder) {
  const TPoints points = painted::linePoints(0, 200, 100.0, 0.5);  // 26.6 degrees
  const TBaseWeld weld;
  const struct {
    double from;
    double to;
    bool isFound;
  } rows[] = {{20.0, 30.0, true}, {30.0, 20.0, true}, {27.5, 45.0, false}, {-45.0, 25.5, false}};
  for (const auto& row : rows) {
    const TLinePara line = weld.findALineRansac(row.from, row.to, kTolPx, 0.9, points);
    EXPECT_EQ(line.isValid, row.isFound) << row.from << ".." << row.to;
  }
  EXPECT_FALSE(weld.findALineRansac(20.0, 30.0, kTolPx, 0.0, painted::linePoints(0, 9, 1.0, 0.5)).isValid);
  EXPECT_TRUE(weld.findALineRansac(20.0, 30.0, kTolPx, 0.0, painted::linePoints(0, 10, 1.0, 0.5)).isValid);
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
    double k;
    double b;
    cv::Point2f point;
    cv::Point2f foot;
  } rows[] = {{1.0, 0.0, {0, 10}, {5, 5}},
              {-1.0, 10.0, {10, 10}, {5, 5}},
              {0.75, 0.0, {0, 6.25F}, {3, 2.25F}},
              {0.0, 40.0, {320, 10}, {320, 40}},
              {0.0, 40.0, {320, 300}, {320, 40}}};
  for (const auto& row : rows) {
    TLinePara line;
    line.k = row.k;
    line.b = row.b;
    const cv::Point2f foot = TBaseWeld().calcDropFeet(line, row.point);
    EXPECT_NEAR(foot.x, row.foot.x, 0.01F);
    if (row.k != 0.0) {
      EXPECT_NEAR(foot.y, row.foot.y, 1e-4F);
    }
  }
}

}  // namespace
