#include "support/painted_frame.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace {

using painted::bentPoints;
using painted::joined;
using painted::linePoints;
using TPoints = std::vector<cv::Point2f>;

std::vector<TSplitAtom> split(const TPoints& stripe) {
  std::vector<TSplitAtom> atoms(2);
  TBaseWeld().splitWeldLine2lines(stripe, atoms, cv::Mat());
  return atoms;
}

// Level, a ramp of 3.9 px per column over the given columns, level.
TPoints rampStripe(int rampColumns) {
  const int end = 100 + rampColumns;
  return joined(bentPoints(0, 100, end, 50.0, 0.0, 3.9), linePoints(end, 250, 50.0 + 3.9 * rampColumns));
}

TLinePara lineThrough(double k, double b, const TPoints& inliers) {
  TLinePara line;
  line.k = k;
  line.b = b;
  line.isValid = true;
  line.inlierPts = inliers;
  return line;
}

TEST(SplitWeldLine, cutsAtVerticesMoreThanTenColumnsApart) {
  // Smoothing draws a ramp out: its vertices are 10 columns apart for 6 columns, 12 for 7. Foot, tip and foot of a
  // spike: the second foot is near the tip, though far from the first foot, which is kept.
  const TPoints spike =
      joined(bentPoints(0, 100, 106, 50.0, 0.0, 3.9), bentPoints(106, 112, 250, 73.4, -3.9, -0.5));
  const struct {
    const char* name;
    TPoints stripe;
    std::vector<std::pair<int, int>> expected;  // start and end columns
  } rows[] = {
      {"empty", {}, {}},
      {"short", linePoints(0, 5, 50.0, 0.3), {}},
      {"straight", linePoints(0, 300, 50.0, 0.3), {}},
      {"V", bentPoints(20, 320, 620, 100.0, 0.5, -0.5), {{20, 320}, {320, 619}}},
      {"vertices 10 columns apart", rampStripe(6), {{0, 98}, {98, 249}}},
      {"vertices 12 columns apart", rampStripe(7), {{0, 98}, {110, 249}}},
      {"spike", spike, {{0, 98}, {98, 249}}},
  };
  for (const auto& row : rows) {
    std::vector<std::pair<int, int>> columns;
    for (const TSplitAtom& atom : split(row.stripe)) {
      columns.emplace_back(atom.startX, atom.endX);
      EXPECT_LT(static_cast<float>(atom.startX), atom.pts.front().x) << row.name;
      EXPECT_LT(atom.pts.back().x, static_cast<float>(atom.endX)) << row.name;
    }
    EXPECT_EQ(columns, row.expected) << row.name;
  }
}

TEST(SplitWeldLine, keepsOnlyAtomsOfTwentyOneInliers) {
  std::size_t fewest = std::numeric_limits<std::size_t>::max();
  for (int leg = 16; leg < 40; ++leg) {
    for (const TSplitAtom& atom : split(bentPoints(0, 200, 200 + leg, 200.0, 0.0, -2.0))) {
      fewest = std::min(fewest, atom.line.inlierPts.size());
    }
  }
  EXPECT_EQ(fewest, 21U);
}

TEST(FuseSplitAtoms, mergesAtMostTenTimesFromTheLeftAndDropsEmptyAtomsUnlessThereIsOnlyOne) {
  std::vector<TSplitAtom> atoms(16);
  for (int i = 0; i < 15; ++i) atoms[i] = {linePoints(30 * i, 30 * i + 29, 50.0), 30 * i, 30 * i + 28, {}};
  TBaseWeld().fusePolyLines2LinesSegment(atoms, cv::Mat());
  ASSERT_EQ(atoms.size(), 5U);
  EXPECT_EQ(atoms[0].startX, 0);
  EXPECT_EQ(atoms[0].endX, 30 * 10 + 28);
  EXPECT_EQ(atoms[0].pts.size(), 11U * 29U);
  EXPECT_EQ(atoms[1].startX, 30 * 11);
  EXPECT_TRUE(atoms[1].line.isValid);
  std::vector<TSplitAtom> one(1);
  TBaseWeld().fusePolyLines2LinesSegment(one, cv::Mat());
  EXPECT_EQ(one.size(), 1U);
}

TEST(Combine2Lines, meetingPointMustLieUnderSixPixelsFromTheChordOfLinesWithInliers) {
  // Both lines start on the chord y = 0 and meet above column 128; the slopes are exact.
  const TPoints firstPts = linePoints(0, 128, 0.0);
  const TPoints secondPts = linePoints(129, 257, 0.0);
  for (const auto& [heightPx, isCombined] :
       {std::pair{0.0, true}, {5.9375, true}, {6.0, false}, {-5.9375, true}, {-6.0, false}}) {
    const double k = heightPx / 128.0;
    const TLinePara first = lineThrough(k, 0.0, {{0, 0}, {60, 1}});
    const TLinePara second = lineThrough(-k, 2.0 * heightPx, {{190, 1}, {256, 0}});
    const TLinePara combined = TBaseWeld().combine2Lines(first, second, firstPts, secondPts);
    EXPECT_EQ(combined.isValid, isCombined) << heightPx;
    EXPECT_EQ(combined.inlierPts.size(), isCombined ? 256U : 0U) << heightPx;
  }
  const TLinePara good = lineThrough(0.0, 0.0, firstPts);
  TLinePara invalid = good;
  invalid.isValid = false;
  for (const TLinePara& bad : {invalid, lineThrough(0.0, 0.0, {})}) {
    EXPECT_FALSE(TBaseWeld().combine2Lines(good, bad, firstPts, secondPts).isValid);
    EXPECT_FALSE(TBaseWeld().combine2Lines(bad, good, firstPts, secondPts).isValid);
  }
}

TEST(RemoveDiscontinuousPts, neverKeepsTheFirstAndTheLastTwo) {
  const std::pair<std::vector<float>, std::vector<float>> rows[] = {
      {{1, 90}, {1, 90}},        {{5, 5, 5}, {}},    {{5, 6, 7, 8}, {6}},
      {{0, 3.9F, 0, 0}, {3.9F}}, {{0, 4, 0, 0}, {}}, {{0, 0, 0, 20, 0, 0, 0, 0}, {0, 0}},
  };
  for (const auto& [before, expected] : rows) {
    TPoints points;
    for (const float y : before) points.emplace_back(static_cast<float>(points.size()), y);
    TBaseWeld().removeDiscontinuousPts(points, 4);
    std::vector<float> kept;
    for (const cv::Point2f& p : points) kept.push_back(p.y);
    EXPECT_EQ(kept, expected) << testing::PrintToString(before);
  }
}

}  // namespace
