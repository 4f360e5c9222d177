#include "bent_stripe.h"

#include <gtest/gtest.h>

#include <opencv2/core/utility.hpp>

#include <climits>
#include <limits>

namespace zelFit {
namespace {

constexpr double kScalePx = 2.0;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(RobustFit, HoldsTheMainFlankAgainstAnother) {
  constexpr double kLargestDeviationPx = 0.25;
  for (const double otherShare : {0.0, 0.2, 0.4}) {
    for (const TBentStripe& stripe : bentStripes(otherShare, 1)) {
      const TLineFitResult line = fitRobust(stripe.points(), kScalePx);
      ASSERT_TRUE(line.success) << stripe;
      EXPECT_LE(stripe.deviationOf(line), kLargestDeviationPx) << stripe;
    }
  }
}

TEST(RobustFit, HoldsAgainstPointsAllOverTheImage) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    const TBentStripe stripe{0.4, 0.0, 0.0, false, 0.5, 1, seed};
    std::vector<cv::Point> points = stripe.points();
    scenes::TRandom random(seed, scenes::TStream::spatter);
    for (cv::Point& p : points) {
      if (random.chance(0.5)) p.y = random.integer(0, 1999);
    }
    const TLineFitResult line = fitRobust(points, kScalePx);
    ASSERT_TRUE(line.success) << stripe;
    EXPECT_LE(stripe.deviationOf(line), 0.3) << stripe;
  }
}

std::vector<cv::Point> upright(int columns) {
  std::vector<cv::Point> points;
  for (int y = 0; y < 200; ++y) points.emplace_back(50 + y * 7 % columns, y);
  return points;
}

TEST(RobustFit, TellsWhenThereIsNoLine) {
  const struct {
    const char* name;
    std::vector<cv::Point> points;
    bool success;
  } rows[] = {
      {"none", {}, false},
      {"one", {{3, 4}}, false},
      {"one twice", {{3, 4}, {3, 4}}, false},
      {"two in a column", {{3, 4}, {3, 9}}, false},
      {"two", {{3, 4}, {13, 9}}, true},
      {"three on a line", {{0, 0}, {50, 25}, {100, 50}}, true},
      {"three off a line", {{0, 0}, {50, 80}, {100, 0}}, false},
      {"upright, one column", upright(1), false},
      {"upright, as wide as two scales", upright(5), false},
      {"short and level", {{0, 7}, {1, 7}, {2, 7}}, true},
  };
  for (const auto& row : rows) {
    const TLineFitResult line = fitRobust(row.points, kScalePx);
    EXPECT_EQ(line.success, row.success) << row.name;
    EXPECT_EQ(line.slope == 0.0 && line.intercept == 0.0, !row.success) << row.name;
  }
}

TEST(RobustFit, NeedsATenthOfThePoints) {
  scenes::TRandom random(3, scenes::TStream::layout);
  std::vector<cv::Point> scatter;
  for (int x = 0; x < 1280; ++x) scatter.emplace_back(x, random.integer(0, 999));
  EXPECT_FALSE(fitRobust(scatter, kScalePx).success);
  for (int x = 0; x < 1280; x += 4) scatter[static_cast<std::size_t>(x)].y = 300;
  const TLineFitResult line = fitRobust(scatter, kScalePx);
  ASSERT_TRUE(line.success);
  EXPECT_NEAR(line.slope, 0.0, 1e-3);
}

// Bends from slight to hopeless, and points all over the place.
TEST(RobustFit, SucceedsWhereverTheQuickLookIsSure) {
  scenes::TRandom random(5, scenes::TStream::layout);
  int sure = 0;
  int unsure = 0;
  for (int round = 0; round < 400; ++round) {
    std::vector<cv::Point> points;
    const double bend = random.uniform(0.0, 0.5);
    const int scatterPx = random.integer(0, 40);
    for (int x = 0, end = random.integer(2, 600); x < end; x += random.integer(1, 3)) {
      points.emplace_back(x, static_cast<int>(bend * std::abs(x - 200)) + random.integer(0, scatterPx));
    }
    const bool isSure = TLineFitFactory().isSureOfRobustLine(points, kScalePx);
    (isSure ? sure : unsure) += 1;
    EXPECT_TRUE(!isSure || fitRobust(points, kScalePx).success) << round;
  }
  EXPECT_GT(sure, 100);
  EXPECT_GT(unsure, 100);
}

TEST(RobustFit, GivesTheSameBitsOnEveryProcessor) {
  for (const TBentStripe& stripe : bentStripes(0.4, 1)) {
    const TLineFitResult line = fitRobust(stripe.points(), kScalePx);
    cv::setUseOptimized(false);
    const TLineFitResult baseline = fitRobust(stripe.points(), kScalePx);
    cv::setUseOptimized(true);
    EXPECT_TRUE(line.slope == baseline.slope && line.intercept == baseline.intercept) << stripe;
  }
}

TEST(RobustFit, TakesScalesAboveZeroOnly) {
  const std::vector<cv::Point> points = TBentStripe{}.points();
  for (const double scalePx : {0.0, -0.0, -1.0, -kInfinity, kNaN}) {
    EXPECT_FALSE(fitRobust(points, scalePx).success) << scalePx;
  }
  TBentStripe exact;
  exact.noisePx = 0.0;
  for (const double scalePx : {5e-324, 1e-9, 1e-3, 1.0, 1e6, 1e300, kInfinity}) {
    const TLineFitResult line = fitRobust(exact.points(), scalePx);
    ASSERT_TRUE(line.success) << scalePx;
    EXPECT_LE(exact.deviationOf(line), 1e-3) << scalePx;
  }
}

TEST(RobustFit, LeavesOutPointsBeyondEveryImage) {
  TBentStripe stripe;
  stripe.slope = 0.25;
  std::vector<cv::Point> points = stripe.points();
  const TLineFitResult clean = fitRobust(points, kScalePx);
  const cv::Point wild[] = {{INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}, {INT_MIN, 5}, {5, INT_MAX}, {65537, 0}};
  for (const cv::Point p : wild) points.insert(points.begin() + 600, p);
  const TLineFitResult line = fitRobust(points, kScalePx);
  EXPECT_EQ(line.slope, clean.slope);
  EXPECT_EQ(line.intercept, clean.intercept);
  EXPECT_FALSE(fitRobust({std::begin(wild), std::end(wild)}, kScalePx).success);
  EXPECT_TRUE(fitRobust({{-65536, 65536}, {65536, -65536}}, kScalePx).success) << "the largest coordinates";
}

}  // namespace
}  // namespace zelFit
