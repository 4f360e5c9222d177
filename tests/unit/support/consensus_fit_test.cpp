#include "bent_stripe.h"
#include "support/arc_tangent.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>
#include <tuple>

namespace zelFit {
namespace {

constexpr int kThinnedStep = 13;  // about 100 points
constexpr double kBorderRoundingDeg = 1e-12;
constexpr double kAtBorderDeg = 1e-5;  // a line held at the border is this near to it
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// How far the angle of the line is outside centre +- half range, modulo 180.
double degreesOutside(const TLineFitResult& line, double centreDeg, double halfRangeDeg) {
  return std::abs(std::remainder(weld::slopeToDeg(line.slope) - centreDeg, 180.0)) - halfRangeDeg;
}

std::vector<cv::Point> lineAt(double deg, double noisePx = 0.0) {
  TBentStripe stripe;
  stripe.slope = std::tan(deg / weld::kDegPerRad);
  stripe.noisePx = noisePx;
  stripe.step = kThinnedStep;
  return stripe.points();
}

TEST(ConsensusFit, FindsTheMainFlank) {
  for (const auto& [otherShare, step, maxDeviationPx] :
       {std::tuple{0.0, kThinnedStep, 1.0}, {0.2, kThinnedStep, 1.0}, {0.4, kThinnedStep, 1.0}, {0.4, 1, 0.5}}) {
    for (const TBentStripe& stripe : bentStripes(otherShare, step)) {
      const TLineFitResult line = fitConsensus(stripe.points(), 0.0, 60.0);
      ASSERT_TRUE(line.success) << stripe;
      EXPECT_LE(stripe.deviationOf(line), maxDeviationPx) << stripe;
    }
  }
}

TEST(ConsensusFit, FindsTheSmallerFlankWhereTheIntervalHoldsNoOther) {
  const TBentStripe stripe{-0.4, 0.7, 0.3, false, 0.5, kThinnedStep};
  const TLineFitResult line = fitConsensus(stripe.points(), -20.0, 15.0);
  ASSERT_TRUE(line.success);
  EXPECT_LE(stripe.deviationOf(line), 1.0);
}

struct TIntervalRow {
  double lineDeg;
  double centreDeg;
  double halfRangeDeg;
  bool success;
};

TEST(ConsensusFit, TakesTheIntervalModulo180) {
  const TIntervalRow rows[] = {
      {10, 0, 45, true},   {10, 180, 45, true}, {10, -360, 45, true},    {-30, 150, 5, true},
      {-30, 30, 5, false}, {80, 90, 15, true},  {-80, 90, 15, true},     {-80, 70, 25, false},
      {-80, 70, 35, true}, {80, -90, 15, true}, {0, 90, 45, false},      {0, 90, 90, true},
      {70, 0, 89.5, true}, {0, 178, 5, true},   {30, 66.5, 111.5, true}, {10, 0, kInfinity, true},
      {45, 45, 1, true},   {-45, 135, 1, true}, {20, 90, 0, false},
  };
  for (const TIntervalRow& row : rows) {
    const TLineFitResult line = fitConsensus(lineAt(row.lineDeg), row.centreDeg, row.halfRangeDeg, 2.0);
    EXPECT_EQ(line.success, row.success) << row.lineDeg << " in " << row.centreDeg << " +- " << row.halfRangeDeg;
    EXPECT_NEAR(weld::slopeToDeg(line.slope), row.success ? row.lineDeg : 0.0, 0.1);
  }
}

TEST(ConsensusFit, HoldsTheBordersOfTheInterval) {
  // Exactly 45 degrees, the interval ending there or a little before.
  std::vector<cv::Point> diagonal;
  for (int x = 0; x < 100; ++x) diagonal.emplace_back(x, 3 + x);
  EXPECT_EQ(fitConsensus(diagonal, 0.0, 45.0).slope, 1.0);
  EXPECT_TRUE(fitConsensus(diagonal, 45.0, 0.0).success);
  EXPECT_FALSE(fitConsensus(diagonal, 0.0, 44.999).success) << "no two points have such a line";
  EXPECT_TRUE(fitConsensus(diagonal, 90.0, 45.0).success);
  EXPECT_FALSE(fitConsensus(diagonal, 90.0, 44.999).success);
}

TEST(ConsensusFit, NeverLeavesTheInterval) {
  // Noise makes some pairs fall into an interval that the line itself is outside of.
  scenes::TRandom random(11, scenes::TStream::layout);
  int atBorder = 0;
  for (int i = 0; i < 400; ++i) {
    const double lineDeg = random.uniform(-89.0, 89.0);
    const double halfRangeDeg = random.uniform(0.0, 30.0);
    const double centreDeg =
        lineDeg + (random.chance(0.5) ? 1.0 : -1.0) * (halfRangeDeg + random.uniform(-0.2, 0.3));
    const TLineFitResult line = fitConsensus(lineAt(lineDeg, 2.0), centreDeg, halfRangeDeg);
    if (!line.success) continue;
    ASSERT_LE(degreesOutside(line, centreDeg, halfRangeDeg), kBorderRoundingDeg) << lineDeg;
    if (degreesOutside(line, centreDeg, halfRangeDeg) >= -kAtBorderDeg) ++atBorder;
  }
  EXPECT_GE(atBorder, 50) << "the lines hardly ever came to the border";
}

TEST(ConsensusFit, LineHeldAtTheBorderKeepsToItsFlank) {
  // The flank is a little steeper than the interval allows, and to the left of the middle of the points.
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    const TBentStripe stripe{0.36, 0.4, -1.0, false, 1.0, kThinnedStep, seed};
    const TLineFitResult line = fitConsensus(stripe.points(), 0.0, 19.3);
    ASSERT_TRUE(line.success) << stripe;
    EXPECT_NEAR(weld::slopeToDeg(line.slope), 19.3, kAtBorderDeg) << stripe;
    const int middle = static_cast<int>(stripe.lastColumn() / 2.0);
    EXPECT_NEAR(line.slope * middle + line.intercept, stripe.rowAt(middle), 1.5) << stripe;
  }
}

TEST(ConsensusFit, TellsWhenThereIsNoLine) {
  const std::vector<cv::Point> points = lineAt(10.0);
  EXPECT_FALSE(fitConsensus({}, 0.0, 45.0).success);
  EXPECT_FALSE(fitConsensus({{5, 5}}, 0.0, 45.0).success);
  EXPECT_FALSE(fitConsensus({{5, 5}, {5, 5}, {5, 90}}, 90.0, 45.0).success);
  EXPECT_FALSE(fitConsensus({{INT_MIN, 0}, {INT_MAX, 0}, {5, 5}}, 0.0, 45.0).success);
  EXPECT_FALSE(fitConsensus(points, kNaN, 45.0).success);
  EXPECT_FALSE(fitConsensus(points, kInfinity, 45.0).success);
  EXPECT_FALSE(fitConsensus(points, 0.0, kNaN).success);
  EXPECT_FALSE(fitConsensus(points, 10.0, -1.0).success);
  for (const double tolPx : {0.0, -1.0, kNaN})
    EXPECT_FALSE(fitConsensus(points, 0.0, 45.0, tolPx).success) << tolPx;
  for (const double tolPx : {5e-324, 1e300, kInfinity}) {
    EXPECT_TRUE(fitConsensus(points, 0.0, 45.0, tolPx).success) << tolPx;
  }
  EXPECT_TRUE(fitConsensus(points, 1e300, 90.0).success);
}

}  // namespace
}  // namespace zelFit
