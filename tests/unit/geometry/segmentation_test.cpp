#include "geometry/segmentation.h"

#include "geometry/piece_fit.h"
#include "geometry/polygon.h"
#include "geometry/stripe_smoothing.h"
#include "geometry/toolkit_records.h"
#include "scenes/random.h"
#include "support/line_math.h"
#include "support/painted_frame.h"
#include "support/seed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace {

using painted::joined;
using painted::linePoints;
using TPoints = std::vector<cv::Point2f>;
using TPieces = std::vector<TStripePiece>;

TStripePiece fitPiece(const TPoints& points) {
  weld::TMemory* const memory = weld::heapMemory();
  return weld::toStripePiece(weld::fitPiece(weld::TPoints(points.begin(), points.end(), memory), 3.0F, memory));
}

constexpr weld::TMergeLimits kNoMerges{0.0F, 0.0F, 0.0F};

TPieces segment(const TPoints& stripe, const weld::TMergeLimits& limits) {
  TPieces pieces(3);
  TBaseWeld().segmentStripe(stripe, pieces, limits.heightPx, limits.gapXPx, limits.gapYPx, 3.0F);
  return pieces;
}

TEST(FitPiece, needsTenPointsAndALine) {
  const TStripePiece nine = fitPiece(linePoints(0, 9, 10.0));
  EXPECT_FALSE(nine.isFitted);
  EXPECT_EQ(nine.lineState, 0);
  EXPECT_EQ(nine.pts.size(), 9U);
  EXPECT_EQ(nine.maxDist, TStripePiece::kUnset);
  EXPECT_FALSE(fitPiece(TPoints(40, {5.0F, 5.0F})).isFitted);

  TPoints points = linePoints(0, 40, 10.0);
  points.front() = {0.75F, 10.5F};  // ends are rounded, ties to even
  points.back() = {39.5F, 110.75F};
  const TStripePiece piece = fitPiece(points);
  EXPECT_TRUE(piece.isFitted);
  EXPECT_EQ(piece.lineState, 1);
  EXPECT_EQ(piece.fitPts.size(), 39U);
  EXPECT_NEAR(piece.k, 0.0F, 1e-4F);
  EXPECT_NEAR(piece.maxDist, 100.75F, 0.1F);
  EXPECT_NEAR(piece.meanDist, 2.5F, 0.1F);
  EXPECT_EQ(piece.startPt, cv::Point(1, 10));
  EXPECT_EQ(piece.endPt, cv::Point(40, 111));
  points = joined(linePoints(0, 41, 10.0), {{20, 13}, {20, 7}});  // both at the tolerance
  EXPECT_EQ(fitPiece(points).fitPts.size(), 41U);
}

TEST(SegmentStripe, countsPieces) {
  TPoints backwards = linePoints(0, 300, 50.0, 0.1);
  std::reverse(backwards.begin(), backwards.end());
  const std::pair<TPoints, std::size_t> rows[] = {
      {{}, 0},        {linePoints(0, 19, 50.0), 0},    {linePoints(0, 20, 50.0), 1},
      {backwards, 0}, {TPoints(100, {5.0F, 5.0F}), 0}, {painted::bentPoints(20, 320, 620, 100.0, 0.5, -0.5), 2}};
  for (const auto& [stripe, count] : rows) {
    const TPieces pieces = segment(stripe, {});
    ASSERT_EQ(pieces.size(), count) << stripe.size() << " points";
    if (count < 2) continue;
    EXPECT_NEAR(pieces[0].k, 0.5F, 0.01F);
    EXPECT_NEAR(pieces[1].k, -0.5F, 0.01F);
    EXPECT_EQ(pieces[0].pts.size() + pieces[1].pts.size(), 598U);  // without the first and the last column
  }
}

TEST(SegmentStripe, neighboursMergeBelowEveryLimit) {
  // Two legs whose facing ends are some columns and rows apart, and whose far ends make a level chord: the higher
  // of the facing ends is that of the left leg, then that of the right one.
  const TPoints stripes[] = {joined(linePoints(0, 301, 100.0, 0.2), linePoints(310, 511, 150.0, -0.25)),
                             joined(linePoints(0, 201, 100.0, 0.25), linePoints(210, 511, 160.0, -0.2))};
  for (const TPoints& stripe : stripes) {
    const TPieces apart = segment(stripe, kNoMerges);
    ASSERT_EQ(apart.size(), 2U);
    ASSERT_EQ(apart[0].startPt.y, apart[1].endPt.y);
    const cv::Point gap = apart[1].startPt - apart[0].endPt;
    const int height = std::max(apart[0].endPt.y, apart[1].startPt.y) - apart[0].startPt.y;
    const float at[] = {static_cast<float>(height), static_cast<float>(std::abs(gap.x)),
                        static_cast<float>(std::abs(gap.y))};
    float above[3];
    for (int i = 0; i < 3; ++i) above[i] = std::nextafter(at[i], 1e9F);
    EXPECT_EQ(segment(stripe, {above[0], above[1], above[2]}).size(), 1U);
    EXPECT_EQ(segment(stripe, {at[0], above[1], above[2]}).size(), 2U) << "height " << height;
    EXPECT_EQ(segment(stripe, {above[0], at[1], above[2]}).size(), 2U) << "columns " << gap.x;
    EXPECT_EQ(segment(stripe, {above[0], above[1], at[2]}).size(), 2U) << "rows " << gap.y;
  }
}

bool areOne(const TStripePiece& first, const TStripePiece& second, const weld::TMergeLimits& limits) {
  const cv::Point2f from = first.startPt;
  const cv::Point2f to = second.endPt;
  const cv::Point2f gap = second.startPt - first.endPt;
  return first.isFitted && second.isFitted && std::abs(gap.x) < limits.gapXPx && std::abs(gap.y) < limits.gapYPx &&
         weld::heightOverChord(from, to, first.endPt) < limits.heightPx &&
         weld::heightOverChord(from, to, second.startPt) < limits.heightPx;
}

// The plain form of the segmentation: every merge is fitted, and every pass begins at the left.
TPieces segmentPlainly(const TPoints& stripe, const weld::TMergeLimits& limits) {
  const cv::Mat image;
  const TWeldParams params;
  const weld::TFrame frame = weld::heapFrame(image, params);
  const weld::TPoints clean = weld::cleanStripe(frame, stripe);
  TPieces pieces;
  if (clean.size() < 20) return pieces;
  const weld::TList<cv::Point> vertices = weld::approximatePolygon(clean, 3.0, frame.memory);
  for (std::size_t j = 1; j < vertices.size(); ++j) {
    const weld::TColumnRange columns{vertices[j - 1].x, vertices[j].x};
    TStripePiece piece = fitPiece(weld::toVector(weld::pointsBetween(clean, columns, false, frame.memory)));
    if (piece.isFitted && piece.fitPts.size() > 10) pieces.push_back(piece);
  }
  for (int pass = 0; pass < 101; ++pass) {
    const auto pair = std::adjacent_find(pieces.begin(), pieces.end(),
                                         [&](const auto& a, const auto& b) { return areOne(a, b, limits); });
    if (pair == pieces.end()) break;
    *pair = fitPiece(joined(pair->pts, std::next(pair)->pts));
    pieces.erase(std::next(pair));
  }
  return pieces;
}

// A ragged stripe: straight legs of random length and slope, some separated by gaps and steps.
TPoints raggedStripe(scenes::TRandom& random, double stepPx, int longestLegPx) {
  TPoints stripe;
  double y = 400.0;
  for (int x = 0; x < 2000;) {
    const double k = random.uniform(-0.4, 0.4);
    for (const int end = x + random.integer(15, longestLegPx); x < end; ++x, y += k) {
      stripe.emplace_back(static_cast<float>(x), static_cast<float>(y + random.uniform(-0.8, 0.8)));
    }
    if (random.chance(0.3)) x += random.integer(5, 60);
    if (random.chance(stepPx / 60.0)) y += random.uniform(-stepPx, stepPx);
  }
  return stripe;
}

TEST(SegmentStripe, mergesLikeThePlainFormOnRaggedStripes) {
  const std::uint64_t seed = testing_support::seedOfCurrentTest();
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  scenes::TRandom random(seed, scenes::TStream::layout);
  std::size_t merges = 0;
  int unfitted = 0;
  for (int round = 0; round < 60; ++round) {
    const bool mergesAll = round % 3 == 2;
    const TPoints stripe = mergesAll ? raggedStripe(random, 60.0, 40) : raggedStripe(random, 12.0, 120);
    const weld::TMergeLimits limits = mergesAll ? weld::TMergeLimits{1e4F, 1e4F, 1e4F}
                                                : weld::TMergeLimits{round % 3 == 0 ? 5.0F : 10.0F, 200.0F, 20.0F};
    const TPieces expected = segmentPlainly(stripe, limits);
    const TPieces pieces = segment(stripe, limits);
    ASSERT_EQ(pieces.size(), expected.size()) << round;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      EXPECT_EQ(pieces[i].pts, expected[i].pts) << round;
      EXPECT_EQ(pieces[i].k, expected[i].k) << round;
      EXPECT_EQ(pieces[i].fitPts, expected[i].fitPts) << round;
      EXPECT_EQ(pieces[i].isFitted, expected[i].isFitted) << round;
      unfitted += pieces[i].isFitted ? 0 : 1;
    }
    merges += segmentPlainly(stripe, kNoMerges).size() - pieces.size();
  }
  EXPECT_GT(merges, 100U) << "the stripes must need merging";
  EXPECT_GT(unfitted, 5) << "and some merged pieces be no line";
}

}  // namespace
