#include "geometry/line_fitting.h"

#include "support/painted_frame.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using painted::joined;
using painted::linePoints;
using TPoints = std::vector<cv::Point2f>;
using TIntPoints = std::vector<cv::Point>;

constexpr double kTolPx = 2.0;
constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(LineSelection, pointExactlyAtTheToleranceIsNeitherNearNorFar) {
  // The line 3x - 4y = 0: its distances are exact fifths.
  const TBaseWeld weld;
  TPoints far;
  weld.filterOutLinePts(0.75, 0.0, 2.0, {{0, 2.4F}, {0, 2.5F}, {0, 2.6F}, {4, 3}, {0, -2.5F}}, far);
  EXPECT_EQ(far, (TPoints{{0, 2.6F}}));
  const TIntPoints whole{{0, 5}, {0, 4}, {0, 6}, {8, 6}};
  TIntPoints near{{1, 1}};
  double share = 0.125;
  EXPECT_TRUE(weld.calcFitPercent(whole, near, 0.75, 0.0, 4.0, share));
  EXPECT_EQ(near, (TIntPoints{{0, 4}, {8, 6}}));
  EXPECT_EQ(share, 0.5);
  EXPECT_EQ(weld.calcFitLinePercent(0.75, 0.0, 4.0, whole), 0.5);
  // Points that are not whole are truncated toward zero; wild ones are sent outside.
  const TPoints wild{{1.9F, -1.9F}, {-0.5F, 0.5F}, {std::nanf(""), 7.0F}, {3e9F, -3e9F}};
  EXPECT_TRUE(weld.calcFitPercent(wild, near, 0.0, 0.0, 1e12, share));
  EXPECT_EQ(near, (TIntPoints{{1, -1}, {0, 0}, {kMin, 7}, {kMin, kMin}}));
  // An empty list leaves the share alone.
  share = 0.125;
  EXPECT_FALSE(weld.calcFitPercent(TIntPoints{}, near, 0.0, 10.0, 1.0, share));
  EXPECT_EQ(share, 0.125);
  EXPECT_TRUE(near.empty());
  EXPECT_EQ(weld.calcFitLinePercent(0.75, 0.0, 4.0, {}), 0.0);
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
    TPoints points;
    for (int i = 0; i < row.count; ++i) points.emplace_back(row.firstX + row.stepX * static_cast<float>(i), 50.0F);
    const TPoints thinned = weld::toVector(weld::thinPointsByX(points, weld::heapMemory()));
    ASSERT_EQ(thinned.size(), row.expectedCount) << row.name;
    EXPECT_EQ(thinned[2].x, row.expectedThird) << row.name;
    EXPECT_EQ(thinned.back().x, row.expectedLast) << row.name;
  }
}

TEST(FindALine, fitsRangesOfTenIndicesInsideTheListOrTheWholeList) {
  const TPoints line = linePoints(0, 40, 30.0, 0.5);
  const TPoints upright(30, {12.0F, 40.0F});
  const struct {
    const char* name;
    TPoints points;
    int startIdx, endIdx;
    bool isValid;
    std::size_t inliers;
    double ratio = 0.0;
  } rows[] = {
      {"range of 9", line, 5, 14, false, 0},
      {"range of 10", line, 5, 15, true, 40, 1.0},
      {"first 10", line, 0, 10, true, 40, 1.0},
      {"last 10", line, 30, 40, true, 40, 1.0},
      {"one behind the list", line, 31, 41, false, 0},
      {"behind the list", line, 40, 50, false, 0},
      {"backwards", line, 20, 10, false, 0},
      {"empty range", line, 0, 0, false, 0},
      {"largest end", line, 0, kMax, false, 0},
      {"inliers of the whole list", joined(linePoints(0, 60, 30.0), linePoints(60, 80, 90.0)), 0, 20, true, 60,
       0.75},
      {"whole list of 10", linePoints(0, 10, 30.0), -1, -1, true, 10, 1.0},
      {"whole list of 9: all points", linePoints(0, 9, 30.0), -1, -1, false, 9},
      {"no line, no start: all points", upright, -1, 5, false, 30},
      {"no line, no end: all points", upright, 0, -1, false, 30},
  };
  for (const auto& row : rows) {
    const TLinePara found = TBaseWeld().findALine(row.points, row.startIdx, row.endIdx);
    EXPECT_EQ(found.isValid, row.isValid) << row.name;
    EXPECT_EQ(found.inlierPts.size(), row.inliers) << row.name;
    EXPECT_EQ(found.inlierRatio, row.ratio) << row.name;
  }
}

TEST(FindALine, rangeIsRoundedWhileTheRestIsTruncated) {
  TBaseWeld weld;
  TWeldParams params;
  params.dPara4 = 0.5;
  weld.setWeldParameters(params);
  // The whole list is fitted at 10: every point is 0.6 away. The range is fitted first at 11, then at 10.
  for (const auto& [startIdx, endIdx, ratio] : {std::tuple{-1, -1, 0.0}, {0, 40, 1.0}}) {
    const TLinePara line = weld.findALine(linePoints(0, 40, 10.6), startIdx, endIdx);
    EXPECT_TRUE(line.isValid);
    EXPECT_NEAR(line.b, 10.0, 1e-9);
    EXPECT_EQ(line.inlierRatio, ratio);
  }
}

TEST(FindALineRansac, needsTenPointsAnAngleInsideInEitherOrderAndTheShare) {
  const TPoints line = linePoints(0, 200, 100.0, 0.5);  // 26.6 degrees
  TPoints sixty = linePoints(0, 60, 100.0, 0.5);        // of 100
  for (int i = 0; i < 40; ++i)
    sixty.emplace_back(60.0F + static_cast<float>(i), static_cast<float>(300 + i * 37 % 97));
  const struct {
    double fromDeg, toDeg, minShare;
    TPoints points;
    bool isValid;
  } rows[] = {{20.0, 30.0, 0.9, line, true},
              {30.0, 20.0, 0.9, line, true},
              {27.5, 45.0, 0.9, line, false},
              {-45.0, 25.5, 0.9, line, false},
              {20.0, 30.0, 0.9, linePoints(0, 10, 100.0, 0.5), true},
              {20.0, 30.0, 0.9, linePoints(0, 9, 100.0, 0.5), false},
              {-45.0, 45.0, 0.6, sixty, true},
              {-45.0, 45.0, std::nextafter(0.6, 1.0), sixty, false},
              {-45.0, 45.0, -1.0, sixty, true}};
  for (const auto& row : rows) {
    const TLinePara found = TBaseWeld().findALineRansac(row.fromDeg, row.toDeg, kTolPx, row.minShare, row.points);
    EXPECT_EQ(found.isValid, row.isValid) << row.fromDeg << ".." << row.toDeg << " " << row.minShare;
    if (row.points != sixty) continue;  // is returned all the same
    EXPECT_NEAR(found.k, 0.5, 0.02);
    EXPECT_EQ(found.inlierRatio, 0.6);
    EXPECT_EQ(found.inlierPts.size(), 60U);
  }
}

TEST(CalcDropFeet, footIsTheNearestPointOfTheLine) {
  const struct {
    double k, b;
    cv::Point2f point, foot;
    double tolPx = 1e-4;
  } rows[] = {{1.0, 0.0, {0, 10}, {5, 5}},
              {-1.0, 10.0, {10, 10}, {5, 5}},
              {0.75, 0.0, {0, 6.25F}, {3, 2.25F}},
              {0.0, 20.0, {320, 20}, {320, 20}, 0.01}};  // divides by no zero
  for (const auto& row : rows) {
    TLinePara line;
    line.k = row.k;
    line.b = row.b;
    EXPECT_LT(cv::norm(TBaseWeld().calcDropFeet(line, row.point) - row.foot), row.tolPx) << row.k;
  }
}

TEST(TBaseWeld, numbersWithoutMeaningGiveTheFailedResult) {
  const TPoints points = painted::bentPoints(20, 320, 620, 100.0, 0.5, -0.5);
  for (const double bad : {kNaN, kInf, -kInf, -1.0}) {
    TBaseWeld weld;
    TWeldParams params;
    params.dPara4 = bad;
    weld.setWeldParameters(params);
    std::vector<TStripePiece> pieces(1);
    weld.segmentStripe(points, pieces, 5.0F, 200.0F, 20.0F, static_cast<float>(bad));
    EXPECT_TRUE(pieces.empty()) << bad;
    EXPECT_EQ(weld.findALine(points, 0, 100).isValid, bad > 0.0) << bad;
    EXPECT_EQ(weld.findALineRansac(-45.0, 45.0, bad, 0.0, points).isValid, bad > 0.0) << bad;
    EXPECT_EQ(weld.calcFitLinePercent(bad, 100.0, 5.0, {{1, 1}}), 0.0) << bad;
  }
}

TEST(CheckImgLegality, needsDataDimensionsAndElements) {
  const int sizes[] = {2, 3, 4};
  const int noSizes[] = {2, 0, 4};
  EXPECT_TRUE(TBaseWeld().checkImgLegality(cv::Mat(1, 1, CV_16UC3)));
  EXPECT_TRUE(TBaseWeld().checkImgLegality(cv::Mat(3, sizes, CV_8UC1)));
  for (const cv::Mat& none : {cv::Mat(), cv::Mat(0, 5, CV_8UC1), cv::Mat(3, noSizes, CV_8UC1)}) {
    EXPECT_FALSE(TBaseWeld().checkImgLegality(none));
  }
}

}  // namespace
