#include "bent_stripe.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>
#include <string>

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
    TBentStripe stripe;
    stripe.slope = 0.4;
    stripe.seed = seed;
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

TEST(RobustFit, FindsTheSameLineInAnyOrderOfPoints) {
  TBentStripe stripe;
  stripe.otherShare = 0.3;
  stripe.otherSlope = -0.6;
  std::vector<cv::Point> points = stripe.points();
  const TLineFitResult ordered = fitRobust(points, kScalePx);
  scenes::TRandom random(7, scenes::TStream::layout);
  for (std::size_t i = points.size() - 1; i > 0; --i) {
    std::swap(points[i], points[static_cast<std::size_t>(random.integer(0, static_cast<int>(i)))]);
  }
  const TLineFitResult shuffled = fitRobust(points, kScalePx);
  EXPECT_NEAR(shuffled.slope, ordered.slope, 1e-4);
  EXPECT_NEAR(shuffled.intercept, ordered.intercept, 0.05);
}

struct TFewPoints {
  std::string name;
  std::vector<cv::Point> points;
  bool success;
};

std::vector<cv::Point> upright(int columns, int rows) {
  std::vector<cv::Point> points;
  for (int y = 0; y < rows; ++y) points.emplace_back(50 + y * 7 % columns, y);
  return points;
}

TEST(RobustFit, TellsWhenThereIsNoLine) {
  const TFewPoints rows[] = {
      {"none", {}, false},
      {"one", {{3, 4}}, false},
      {"one twice", {{3, 4}, {3, 4}}, false},
      {"two in a column", {{3, 4}, {3, 9}}, false},
      {"two", {{3, 4}, {13, 9}}, true},
      {"three on a line", {{0, 0}, {50, 25}, {100, 50}}, true},
      {"three off a line", {{0, 0}, {50, 80}, {100, 0}}, false},
      {"upright, one column", upright(1, 200), false},
      {"upright, as wide as the scale", upright(3, 200), false},
      {"upright, as wide as two scales", upright(5, 200), false},
      {"short and level", {{0, 7}, {1, 7}, {2, 7}}, true},
  };
  for (const TFewPoints& row : rows) {
    const TLineFitResult line = fitRobust(row.points, kScalePx);
    EXPECT_EQ(line.success, row.success) << row.name;
    EXPECT_EQ(line.slope == 0.0 && line.intercept == 0.0, !row.success) << row.name;
  }
  const TLineFitResult two = fitRobust({{3, 4}, {13, 9}}, kScalePx);
  EXPECT_NEAR(two.slope, 0.5, 1e-6);
  EXPECT_NEAR(two.intercept, 2.5, 1e-5);
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
