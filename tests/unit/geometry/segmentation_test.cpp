#include "geometry/segmentation.h"

#include "geometry/piece_fit.h"
#include "geometry/polygon.h"
#include "geometry/stripe_smoothing.h"
#include "scenes/random.h"
#include "support/painted_frame.h"
#include "support/seed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace {

using TPoints = std::vector<cv::Point2f>;
using TPieces = std::vector<TStripePiece>;

// A fitted piece between two ends, with points enough to be fitted again.
TStripePiece pieceBetween(cv::Point start, cv::Point end) {
  const double k = static_cast<double>(end.y - start.y) / (end.x - start.x);
  TStripePiece piece = weld::fitPiece(painted::linePoints(start.x, end.x + 1, start.y, k), weld::kPieceFitTolPx);
  piece.startPt = start;
  piece.endPt = end;
  return piece;
}

TEST(FitPiece, needsTenPointsAndALine) {
  const TStripePiece nine = weld::fitPiece(painted::linePoints(0, 9, 10.0), 3.0F);
  EXPECT_FALSE(nine.isFitted);
  EXPECT_EQ(nine.lineState, 0);
  EXPECT_EQ(nine.pts.size(), 9U);
  EXPECT_EQ(nine.maxDist, TStripePiece::kUnset);
  EXPECT_FALSE(weld::fitPiece(TPoints(40, {5.0F, 5.0F}), 3.0F).isFitted);

  TPoints points = painted::linePoints(0, 40, 10.0);
  points.front() = {0.75F, 10.5F};  // ends are rounded, ties to even
  points.back() = {39.5F, 110.75F};
  const TStripePiece piece = weld::fitPiece(points, 3.0F);
  EXPECT_TRUE(piece.isFitted);
  EXPECT_EQ(piece.lineState, 1);
  EXPECT_EQ(piece.fitPts.size(), 39U);
  EXPECT_NEAR(piece.k, 0.0F, 1e-4F);
  EXPECT_NEAR(piece.maxDist, 100.75F, 0.1F);
  EXPECT_NEAR(piece.meanDist, 2.5F, 0.1F);
  EXPECT_EQ(piece.startPt, cv::Point(1, 10));
  EXPECT_EQ(piece.endPt, cv::Point(40, 111));
}

TEST(TryMergePieces, heightAndGapsMustStayBelowTheirLimits) {
  const struct {
    const char* name;
    cv::Point firstEnd, secondStart, secondEnd;
    bool isMerged;
  } rows[] = {
      {"first end 4 px over the chord", {100, 4}, {101, 0}, {200, 0}, true},
      {"first end 5 px over the chord", {100, 5}, {101, 0}, {200, 0}, false},
      {"second start 4 px under the chord", {100, 0}, {101, -4}, {200, 0}, true},
      {"second start 5 px under the chord", {100, 0}, {101, -5}, {200, 0}, false},
      {"column gap 199", {100, 0}, {299, 0}, {400, 0}, true},
      {"column gap 200", {100, 0}, {300, 0}, {400, 0}, false},
      {"column gap 200 backwards", {300, 0}, {100, 0}, {400, 0}, false},
      {"row gap 19 on a slope", {100, 100}, {119, 119}, {200, 200}, true},
      {"row gap 20 on a slope", {100, 100}, {120, 120}, {200, 200}, false},
  };
  for (const auto& row : rows) {
    const TStripePiece first = pieceBetween({0, 0}, row.firstEnd);
    const TStripePiece second = pieceBetween(row.secondStart, row.secondEnd);
    TStripePiece merged;
    ASSERT_EQ(weld::tryMergePieces(first, second, merged, {5.0F, 200.0F, 20.0F}), row.isMerged) << row.name;
    EXPECT_EQ(merged.pts.size(), row.isMerged ? first.pts.size() + second.pts.size() : 0U) << row.name;
  }
}

TEST(TryMergePieces, unfittedPiecesStayButAFailedJointFitMerges) {
  TStripePiece first = pieceBetween({0, 0}, {100, 0});
  TStripePiece second = pieceBetween({101, 0}, {200, 0});
  first.pts.resize(4);
  second.pts.resize(5);
  TStripePiece merged;
  EXPECT_TRUE(weld::tryMergePieces(first, second, merged, {}));
  EXPECT_FALSE(merged.isFitted);
  EXPECT_EQ(merged.pts.size(), 9U);
  TStripePiece again;
  EXPECT_FALSE(weld::tryMergePieces(merged, pieceBetween({201, 0}, {300, 0}), again, {}));
  EXPECT_FALSE(weld::tryMergePieces(pieceBetween({-99, 0}, {-1, 0}), merged, again, {}));
}

TEST(SegmentStripe, vGivesTwoPiecesWithoutTheColumnsOfTheEnds) {
  TPieces pieces;
  TBaseWeld().segmentStripe(painted::bentPoints(20, 320, 620, 100.0, 0.5, -0.5), pieces, 5.0F, 200.0F, 20.0F,
                            3.0F);
  ASSERT_EQ(pieces.size(), 2U);
  EXPECT_NEAR(pieces[0].k, 0.5F, 0.01F);
  EXPECT_NEAR(pieces[1].k, -0.5F, 0.01F);
  EXPECT_LT(pieces[0].pts.back().x, pieces[1].pts.front().x);
  EXPECT_NEAR(pieces[0].endPt.x, 320, 4);
  EXPECT_EQ(pieces[0].pts.size() + pieces[1].pts.size(), 600U - 2U);  // without the first and the last column
}

TEST(SegmentStripe, shortAndBackwardStripesGiveNothing) {
  TPoints backwards = painted::linePoints(0, 300, 50.0, 0.1);
  std::reverse(backwards.begin(), backwards.end());
  const std::pair<TPoints, std::size_t> rows[] = {{{}, 0},
                                                  {painted::linePoints(0, 19, 50.0), 0},
                                                  {painted::linePoints(0, 20, 50.0), 1},
                                                  {backwards, 0},
                                                  {TPoints(100, {5.0F, 5.0F}), 0}};
  for (const auto& [stripe, count] : rows) {
    TPieces pieces(3);
    TBaseWeld().segmentStripe(stripe, pieces, 5.0F, 200.0F, 20.0F, 3.0F);
    EXPECT_EQ(pieces.size(), count) << stripe.size() << " points";
  }
}

// The plain form of the segmentation: every pass begins at the left.
TPieces segmentPlainly(const TPoints& stripe, const weld::TMergeLimits& limits) {
  const TPoints clean = weld::cleanStripe(stripe);
  TPieces pieces;
  if (clean.size() < 20) return pieces;
  const std::vector<cv::Point> vertices = weld::approximatePolygon(clean, 3.0);
  for (std::size_t j = 1; j < vertices.size(); ++j) {
    TStripePiece piece = weld::fitPiece(weld::pointsBetween(clean, vertices[j - 1].x, vertices[j].x), 3.0F);
    if (piece.isFitted && piece.fitPts.size() > 10) pieces.push_back(piece);
  }
  for (int pass = 0; pass < 101; ++pass) {
    bool isChanged = false;
    for (std::size_t i = 0; i + 1 < pieces.size() && !isChanged; ++i) {
      TStripePiece merged;
      isChanged = weld::tryMergePieces(pieces[i], pieces[i + 1], merged, limits);
      if (!isChanged) continue;
      pieces[i] = merged;
      pieces.erase(pieces.begin() + static_cast<std::ptrdiff_t>(i) + 1);
    }
    if (!isChanged) break;
  }
  return pieces;
}

// A ragged stripe: straight legs of random length and slope, some separated by gaps.
TPoints raggedStripe(scenes::TRandom& random) {
  TPoints stripe;
  double x = 0.0;
  double y = 400.0;
  while (x < 1200.0) {
    const double k = random.uniform(-0.4, 0.4);
    for (int i = random.integer(15, 120); i > 0; --i) {
      stripe.emplace_back(static_cast<float>(x), static_cast<float>(y + random.uniform(-0.8, 0.8)));
      x += 1.0;
      y += k;
    }
    if (random.chance(0.3)) x += random.integer(5, 60);
    if (random.chance(0.2)) y += random.uniform(-12.0, 12.0);
  }
  return stripe;
}

TEST(SegmentStripe, mergesLikeThePlainFormOnRaggedStripes) {
  const std::uint64_t seed = testing_support::seedOfCurrentTest();
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  scenes::TRandom random(seed, scenes::TStream::layout);
  int merges = 0;
  for (int round = 0; round < 60; ++round) {
    const TPoints stripe = raggedStripe(random);
    const weld::TMergeLimits limits{round % 2 == 0 ? 5.0F : 10.0F, 200.0F, 20.0F};
    const TPieces expected = segmentPlainly(stripe, limits);
    const TPieces pieces = weld::segmentStripe(stripe, limits);
    ASSERT_EQ(pieces.size(), expected.size()) << round;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      EXPECT_EQ(pieces[i].pts, expected[i].pts) << round;
      EXPECT_EQ(pieces[i].k, expected[i].k) << round;
      EXPECT_EQ(pieces[i].fitPts, expected[i].fitPts) << round;
      EXPECT_EQ(pieces[i].isFitted, expected[i].isFitted) << round;
    }
    merges += static_cast<int>(segmentPlainly(stripe, {0.0F, 0.0F, 0.0F}).size() - pieces.size());
  }
  EXPECT_GT(merges, 60) << "the stripes must need merging";
}

}  // namespace
