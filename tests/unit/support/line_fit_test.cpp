#include "bent_stripe.h"
#include "support/arc_tangent.h"

#include <gtest/gtest.h>

#include <opencv2/core/utility.hpp>

#include <climits>
#include <limits>

namespace zelFit {
namespace {

using TPoints = std::vector<cv::Point>;

constexpr double kScalePx = 2.0;
constexpr int kThinnedStep = 13;  // about 100 points
constexpr double kBorderRoundingDeg = 1e-12;
constexpr double kAtBorderDeg = 1e-5;  // a line held at the border is this near to it
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Degrees between a line and a direction, the nearest way.
double degreesOff(const TLineFitResult& line, double deg) {
  return std::abs(std::remainder(weld::slopeToDeg(line.slope) - deg, 180.0));
}

TPoints lineAt(double deg, double noisePx = 0.0) {
  TBentStripe stripe;
  stripe.slope = std::tan(deg / weld::kDegPerRad);
  stripe.noisePx = noisePx;
  stripe.step = kThinnedStep;
  return stripe.points();
}

TEST(RobustFit, HoldsTheMainFlankAgainstAnotherOnEveryProcessor) {
  for (const double otherShare : {0.0, 0.2, 0.4}) {
    for (const TBentStripe& stripe : bentStripes(otherShare, 1)) {
      const TLineFitResult line = fitRobust(stripe.points(), kScalePx);
      ASSERT_TRUE(line.success) << stripe;
      EXPECT_LE(stripe.deviationOf(line), 0.25) << stripe;
      cv::setUseOptimized(false);
      const TLineFitResult baseline = fitRobust(stripe.points(), kScalePx);
      cv::setUseOptimized(true);
      EXPECT_TRUE(line.slope == baseline.slope && line.intercept == baseline.intercept) << stripe;
    }
  }
}

// One point per column, `count` of them evenly on a level line, the others far from every line.
TPoints scatterAround(int count) {
  scenes::TRandom random(3, scenes::TStream::layout);
  TPoints points;
  for (int x = 0; x < 1280; ++x) points.emplace_back(x, random.integer(1000, 60000));
  for (int i = 0; i < count; ++i) points[static_cast<std::size_t>(i * 1280 / count)].y = 300;
  return points;
}

TPoints upright(int columns) {
  TPoints points;
  for (int y = 0; y < 200; ++y) points.emplace_back(50 + y * 7 % columns, y);
  return points;
}

TEST(RobustFit, TellsWhenThereIsNoLine) {
  const TPoints wild{{INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}, {INT_MIN, 5}, {5, INT_MAX}, {65537, 0}};
  const struct {
    const char* name;
    TPoints points;
    bool success;
    double scalePx = kScalePx;
  } rows[] = {
      {"none", {}, false},
      {"one", {{3, 4}}, false},
      {"one twice", {{3, 4}, {3, 4}}, false},
      {"two in a column", {{3, 4}, {3, 9}}, false},
      {"two", {{3, 4}, {13, 9}}, true},
      {"three on a line", {{0, 0}, {50, 25}, {100, 50}}, true},
      {"three off a line", {{0, 0}, {50, 80}, {100, 0}}, false},
      {"short and level", {{0, 7}, {1, 7}, {2, 7}}, true},
      {"upright, one column", upright(1), false},
      {"upright, as wide as two scales", upright(5), false},
      {"a tenth of the points", scatterAround(128), true},
      {"less than a tenth", scatterAround(127), false},
      {"beyond every image", wild, false},
      {"largest coordinates", {{-65536, 65536}, {65536, -65536}}, true},
      {"scale 0", lineAt(10.0), false, 0.0},
      {"negative scale", lineAt(10.0), false, -1.0},
      {"no number as scale", lineAt(10.0), false, kNaN},
      {"smallest scale", lineAt(0.0), true, 5e-324},
      {"largest scale", lineAt(10.0), true, kInfinity},
  };
  for (const auto& row : rows) {
    const TLineFitResult line = fitRobust(row.points, row.scalePx);
    EXPECT_EQ(line.success, row.success) << row.name;
    EXPECT_TRUE(line.success || (line.slope == 0.0 && line.intercept == 0.0)) << row.name;
  }
  TPoints steep;  // 3 rows off, which is less than a scale across the line
  for (int x = 0; x < 400; ++x) steep.emplace_back(x, 3 * x + (x % 2 == 0 ? 3 : -3));
  EXPECT_NEAR(fitRobust(steep, kScalePx).intercept, 0.0, 0.5);
  TPoints points = lineAt(14.0);
  const TLineFitResult clean = fitRobust(points, kScalePx);
  points.insert(points.begin() + 50, wild.begin(), wild.end());
  EXPECT_EQ(fitRobust(points, kScalePx).slope, clean.slope);
}

// Bends from slight to hopeless, and points all over the place.
TEST(RobustFit, SucceedsWhereverTheQuickLookIsSure) {
  scenes::TRandom random(5, scenes::TStream::layout);
  int sure = 0;
  for (int round = 0; round < 400; ++round) {
    TPoints points;
    const double bend = random.uniform(0.0, 0.5);
    const int scatterPx = random.integer(0, 40);
    for (int x = 0, end = random.integer(2, 600); x < end; x += random.integer(1, 3)) {
      points.emplace_back(x, static_cast<int>(bend * std::abs(x - 200)) + random.integer(0, scatterPx));
    }
    if (!TLineFitFactory().isSureOfRobustLine(points, kScalePx)) continue;
    ++sure;
    EXPECT_TRUE(fitRobust(points, kScalePx).success) << round;
  }
  EXPECT_GT(sure, 100);
  EXPECT_LT(sure, 300);
}

TEST(ConsensusFit, FindsTheMainFlank) {
  for (const double otherShare : {0.0, 0.2, 0.4}) {
    for (const TBentStripe& stripe : bentStripes(otherShare, kThinnedStep)) {
      const TLineFitResult line = fitConsensus(stripe.points(), 0.0, 60.0);
      ASSERT_TRUE(line.success) << stripe;
      EXPECT_LE(stripe.deviationOf(line), 1.0) << stripe;
    }
  }
  const TBentStripe smaller{-0.4, 0.7, 0.3, false, 0.5, kThinnedStep};
  EXPECT_LE(smaller.deviationOf(fitConsensus(smaller.points(), -20.0, 15.0)), 1.0) << "alone in the interval";
  TPoints two;
  for (int x = 0; x < 160; x += 10) two.insert(two.end(), {{x, 7}, {x, 27}});
  EXPECT_EQ(fitConsensus(two, 0.0, 45.0).intercept, 7.0) << "the first of equal ones";
}

TEST(ConsensusFit, TakesTheIntervalModulo180AndItsBorders) {
  const struct {
    double lineDeg, centreDeg, halfRangeDeg;
    bool success;
    double tolPx = 2.0;
  } rows[] = {
      {10, 0, 45, true},           {10, 180, 45, true},        {10, -360, 45, true},     {-30, 150, 5, true},
      {-30, 30, 5, false},         {80, 90, 15, true},         {-80, 90, 15, true},      {-80, 70, 25, false},
      {-80, 70, 35, true},         {80, -90, 15, true},        {0, 90, 45, false},       {0, 90, 90, true},
      {70, 0, 89.5, true},         {0, 178, 5, true},          {30, 66.5, 111.5, true},  {10, 0, kInfinity, true},
      {10, 1e300, 90, true},       {20, 90, 0, false},         {45, 0, 45, true},        {45, 45, 0, true},
      {45, 0, 44.999, false},      {45, 90, 45, true},         {45, 90, 44.999, false},  {-45, 135, 1, true},
      {10, kNaN, 45, false},       {10, kInfinity, 45, false}, {10, 0, kNaN, false},     {10, 10, -1, false},
      {10, 0, 45, false, 0.0},     {10, 0, 45, false, -1.0},   {10, 0, 45, false, kNaN}, {10, 0, 45, true, 1e300},
      {10, 0, 45, true, kInfinity}};
  for (const auto& row : rows) {
    const TLineFitResult line = fitConsensus(lineAt(row.lineDeg), row.centreDeg, row.halfRangeDeg, row.tolPx);
    EXPECT_EQ(line.success, row.success) << row.lineDeg << " in " << row.centreDeg << " +- " << row.halfRangeDeg;
    EXPECT_NEAR(weld::slopeToDeg(line.slope), row.success ? row.lineDeg : 0.0, 0.1);
  }
  for (const TPoints& points : {TPoints{}, {{5, 5}}, {{5, 5}, {5, 90}}, {{INT_MIN, 0}, {INT_MAX, 0}, {5, 5}}}) {
    EXPECT_FALSE(fitConsensus(points, 90.0, 45.0).success);
  }
}

TEST(ConsensusFit, KeepsToTheNearerBorderOfTheInterval) {
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
    ASSERT_LE(degreesOff(line, centreDeg), halfRangeDeg + kBorderRoundingDeg) << lineDeg;
    ASSERT_LE(degreesOff(line, lineDeg), 0.5);
    if (degreesOff(line, centreDeg) >= halfRangeDeg - kAtBorderDeg) ++atBorder;
  }
  EXPECT_GE(atBorder, 50) << "the lines hardly ever came to the border";
}

}  // namespace
}  // namespace zelFit
