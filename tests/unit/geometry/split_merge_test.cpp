#include "geometry/split_merge.h"

#include "geometry/line_fitting.h"
#include "support/painted_frame.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

using painted::bentPoints;
using painted::joined;
using TPoints = std::vector<cv::Point2f>;

constexpr double kTolPx = 2.0;

// Level, a ramp of 3.9 px per column over the given columns, level.
TPoints rampStripe(int rampColumns) {
  const int end = 100 + rampColumns;
  return joined(bentPoints(0, 100, end, 50.0, 0.0, 3.9), painted::linePoints(end, 250, 50.0 + 3.9 * rampColumns));
}

TLinePara lineThrough(double k, double b, const TPoints& inliers) {
  TLinePara line;
  line.k = k;
  line.b = b;
  line.isValid = true;
  line.inlierPts = inliers;
  return line;
}

TSplitAtom atomOf(const TPoints& points) {
  if (points.empty()) return {};
  return {points, static_cast<int>(points.front().x), static_cast<int>(points.back().x), {}};
}

TEST(SplitWeldLine, straightAndShortStripesGiveNoAtoms) {
  for (const int columns : {0, 5, 300}) {
    std::vector<TSplitAtom> atoms(2);
    TBaseWeld().splitWeldLine2lines(painted::linePoints(0, columns, 50.0, 0.3), atoms, cv::Mat());
    EXPECT_TRUE(atoms.empty()) << columns;
  }
}

TEST(SplitWeldLine, vGivesTwoAtomsWithTheirLines) {
  std::vector<TSplitAtom> atoms;
  TBaseWeld().splitWeldLine2lines(bentPoints(20, 320, 620, 100.0, 0.5, -0.5), atoms, cv::Mat());
  ASSERT_EQ(atoms.size(), 2U);
  EXPECT_NEAR(atoms[0].line.k, 0.5, 0.01);
  EXPECT_NEAR(atoms[1].line.k, -0.5, 0.01);
  EXPECT_EQ(atoms[0].endX, atoms[1].startX);
  for (const TSplitAtom& atom : atoms) {
    EXPECT_LT(static_cast<float>(atom.startX), atom.pts.front().x);
    EXPECT_LT(atom.pts.back().x, static_cast<float>(atom.endX));
  }
}

TEST(SplitWeldLine, keepsOnlyAtomsOfTwentyOneInliers) {
  for (int leg = 16; leg < 40; ++leg) {
    const TPoints stripe = bentPoints(0, 200, 200 + leg, 200.0, 0.0, -2.0);
    const std::vector<TSplitAtom> cut = weld::cutIntoSplitAtoms(stripe);
    ASSERT_EQ(cut.size(), 2U) << leg;
    const std::size_t legInliers = weld::fitLine(cut[1].pts, kTolPx).inlierPts.size();
    EXPECT_EQ(weld::splitWeldLine(stripe, kTolPx).size(), legInliers >= 21 ? 2U : 1U) << leg << ": " << legInliers;
  }
}

TEST(CutIntoSplitAtoms, vertexWithinTenColumnsOfTheOneBeforeIsSkipped) {
  // Smoothing draws a ramp out: its vertices are 10 columns apart for 6 columns, 12 for 7.
  EXPECT_EQ(weld::cutIntoSplitAtoms(rampStripe(6)).size(), 2U);
  EXPECT_EQ(weld::cutIntoSplitAtoms(rampStripe(7)).size(), 3U);
  // Foot, tip and foot of a spike: the second foot is near the tip, though far from the first foot, which is kept.
  const TPoints spike =
      joined(bentPoints(0, 100, 106, 50.0, 0.0, 3.9), bentPoints(106, 112, 250, 73.4, -3.9, 0.0));
  EXPECT_EQ(weld::cutIntoSplitAtoms(spike).size(), 2U);
}

TEST(FuseSplitAtoms, mergesAtMostTenTimesFromTheLeft) {
  std::vector<TSplitAtom> atoms;
  for (int i = 0; i < 15; ++i) atoms.push_back(atomOf(painted::linePoints(30 * i, 30 * i + 29, 50.0)));
  TBaseWeld().fusePolyLines2LinesSegment(atoms, cv::Mat());
  ASSERT_EQ(atoms.size(), 5U);
  EXPECT_EQ(atoms[0].startX, 0);
  EXPECT_EQ(atoms[0].endX, 30 * 10 + 28);
  EXPECT_EQ(atoms[0].pts.size(), 11U * 29U);
  EXPECT_EQ(atoms[1].startX, 30 * 11);
}

TEST(FuseSplitAtoms, dropsEmptyAtomsUnlessThereIsOnlyOne) {
  std::vector<TSplitAtom> one{atomOf({})};
  weld::fuseSplitAtoms(one, kTolPx);
  EXPECT_EQ(one.size(), 1U);
  std::vector<TSplitAtom> two{atomOf({}), atomOf(painted::linePoints(0, 30, 9.0))};
  weld::fuseSplitAtoms(two, kTolPx);
  ASSERT_EQ(two.size(), 1U);
  EXPECT_TRUE(two[0].line.isValid);
}

TEST(Combine2Lines, meetingPointMustLieUnderSixPixelsFromTheChord) {
  // Both lines start on the chord y = 0 and meet above column 128; the slopes are exact.
  const TPoints firstPts = painted::linePoints(0, 128, 0.0);
  const TPoints secondPts = painted::linePoints(129, 257, 0.0);
  for (const auto& [heightPx, isCombined] :
       {std::pair{0.0, true}, {5.9375, true}, {6.0, false}, {-5.9375, true}, {-6.0, false}}) {
    const double k = heightPx / 128.0;
    const TLinePara first = lineThrough(k, 0.0, {{0, 0}, {60, 1}});
    const TLinePara second = lineThrough(-k, 2.0 * heightPx, {{190, 1}, {256, 0}});
    const TLinePara combined = TBaseWeld().combine2Lines(first, second, firstPts, secondPts);
    EXPECT_EQ(combined.isValid, isCombined) << heightPx;
    EXPECT_EQ(combined.inlierPts.size(), isCombined ? 256U : 0U) << heightPx;
  }
}

TEST(Combine2Lines, linesWithoutFitOrInliersAreNotCombined) {
  const TPoints points = painted::linePoints(0, 100, 0.0);
  const TLinePara good = lineThrough(0.0, 0.0, points);
  TLinePara invalid = good;
  invalid.isValid = false;
  const TLinePara bare = lineThrough(0.0, 0.0, {});
  for (const TLinePara& bad : {invalid, bare}) {
    EXPECT_FALSE(TBaseWeld().combine2Lines(good, bad, points, points).isValid);
    EXPECT_FALSE(TBaseWeld().combine2Lines(bad, good, points, points).isValid);
  }
}

TEST(RemoveDiscontinuousPts, neverKeepsTheFirstAndTheLastTwo) {
  const struct {
    const char* name;
    std::vector<float> rows, expected;
  } rows[] = {
      {"two stay", {1, 90}, {1, 90}},
      {"three come out empty", {5, 5, 5}, {}},
      {"four keep one at most", {5, 6, 7, 8}, {6}},
      {"just under the limit", {0, 3.9F, 0, 0}, {3.9F}},
      {"at the limit", {0, 4, 0, 0}, {}},
      {"neighbours of a jump", {0, 0, 0, 20, 0, 0, 0, 0}, {0, 0}},
  };
  for (const auto& row : rows) {
    TPoints points;
    for (const float y : row.rows) points.emplace_back(static_cast<float>(points.size()), y);
    TBaseWeld().removeDiscontinuousPts(points, 4);
    std::vector<float> kept;
    for (const cv::Point2f& p : points) kept.push_back(p.y);
    EXPECT_EQ(kept, row.expected) << row.name;
  }
}

TEST(CheckImgLegality, needsDataDimensionsAndElements) {
  const int sizes[] = {2, 3, 4};
  const int noSizes[] = {2, 0, 4};
  EXPECT_TRUE(TBaseWeld().checkImgLegality(cv::Mat(1, 1, CV_16UC3)));
  EXPECT_TRUE(TBaseWeld().checkImgLegality(cv::Mat(3, sizes, CV_8UC1)));
  EXPECT_FALSE(TBaseWeld().checkImgLegality(cv::Mat()));
  EXPECT_FALSE(TBaseWeld().checkImgLegality(cv::Mat(0, 5, CV_8UC1)));
  EXPECT_FALSE(TBaseWeld().checkImgLegality(cv::Mat(3, noSizes, CV_8UC1)));
}

}  // namespace
