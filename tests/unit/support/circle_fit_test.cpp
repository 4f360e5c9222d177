#include "support/circle_fit.h"
#include "scenes/random.h"
#include "support/exact_log.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(ThreePoints, GiveTheirCircleOrTellThatThereIsNone) {
  const struct {
    const char* name;
    cv::Point2d a, b, c;
    bool success;
    double x, y, radius;
  } rows[] = {
      {"right angle", {0, 0}, {8, 0}, {0, 6}, true, 4, 3, 5},
      {"the other way round", {0, 6}, {8, 0}, {0, 0}, true, 4, 3, 5},
      {"far off", {1e6, 1e6}, {1e6 + 8, 1e6}, {1e6, 1e6 + 6}, true, 1e6 + 4, 1e6 + 3, 5},
      {"nearly straight", {-100, 0}, {0, 1e-3}, {100, 0}, true, 0, 5e-4 - 5e6, 5e6},
      {"on a line", {0, 0}, {1, 2}, {3, 6}, false, 0, 0, 0},
      {"first repeated", {1, 1}, {1, 1}, {3, 6}, false, 0, 0, 0},
      {"last repeated", {0, 0}, {3, 6}, {3, 6}, false, 0, 0, 0},
      {"all the same", {1, 1}, {1, 1}, {1, 1}, false, 0, 0, 0},
      {"not a number", {kNaN, 0}, {8, 0}, {0, 6}, false, 0, 0, 0},
      {"infinite", {0, 0}, {8, kInfinity}, {0, 6}, false, 0, 0, 0},
      {"too large to square", {0, 0}, {8e200, 0}, {0, 6e200}, false, 0, 0, 0},
  };
  for (const auto& row : rows) {
    cv::Point2d centre(7, 7);
    double radius = 7;
    EXPECT_EQ(zel::threePoints2circle(row.a, row.b, row.c, centre, radius), row.success) << row.name;
    EXPECT_NEAR(centre.x, row.x, 1e-6 * (1 + row.radius)) << row.name;
    EXPECT_NEAR(centre.y, row.y, 1e-6 * (1 + row.radius)) << row.name;
    EXPECT_NEAR(radius, row.radius, 1e-6 * (1 + row.radius)) << row.name;
  }
}

std::vector<cv::Point2f> arc(double radius, double openingDeg, double noisePx, double wildShare,
                             std::uint64_t seed) {
  scenes::TRandom random(seed, scenes::TStream::noise);
  std::vector<cv::Point2f> points;
  for (int i = 0; i < 200; ++i) {
    const double angle = (-90 - openingDeg / 2 + openingDeg * i / 199) * CV_PI / 180;
    const double d = radius + noisePx * scenes::toGaussian(random.next());
    cv::Point2d p(640 + d * std::cos(angle), 700 + d * std::sin(angle));
    if (random.chance(wildShare)) p = {p.x, random.uniform(300, 800)};
    points.emplace_back(p);
  }
  return points;
}

TEST(RansacCircle, HoldsAgainstWildPointsOnAShortArc) {
  for (const double radius : {150.0, 300.0, 600.0}) {
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
      zelFit::TCircleFitFactory factory;
      ASSERT_TRUE(factory.createFitType_ransacCircle(arc(radius, 60, 0.3, 0.4, seed), 1.5, 20, 2000)) << seed;
      EXPECT_NEAR(factory.result().radiusPx, radius, 0.02 * radius) << seed;
      EXPECT_GE(factory.result().inliers, 100);
    }
  }
}

// The bound is the Cramer-Rao one: the inverse of the normal matrix of a free circle on this arc.
TEST(RansacCircle, IsNearlyAsGoodAsLeastSquaresCanBe) {
  constexpr double kRadius = 100;
  double syy = 0, sy = 0;  // of the unit normals; the arc is symmetric, and x apart from the rest
  for (int i = 0; i < 200; ++i) {
    const double angle = (-90 - 60 + 120.0 * i / 199) * CV_PI / 180;
    syy += std::sin(angle) * std::sin(angle), sy += std::sin(angle);
  }
  const double bound = syy / (200 * syy - sy * sy);
  double sum = 0;
  constexpr int kTrials = 300;
  for (std::uint64_t seed = 1; seed <= kTrials; ++seed) {
    zelFit::TCircleFitFactory factory;
    ASSERT_TRUE(factory.createFitType_ransacCircle(arc(kRadius, 120, 0.5, 0, seed), 2.5, 20, 1000));
    const double error = factory.result().radiusPx - kRadius;
    sum += error * error / 0.25;
  }
  EXPECT_GE(bound / (sum / kTrials), 0.8) << "efficiency";  // itself known to 8 %
}

TEST(RansacCircle, TellsWhenThereIsNoCircle) {
  const auto good = arc(100, 60, 0.2, 0, 1);
  std::vector<cv::Point2f> straight;
  for (int i = 0; i < 100; ++i) straight.emplace_back(static_cast<float>(i), static_cast<float>(2 * i));
  std::vector<cv::Point2f> noise;
  scenes::TRandom random(3, scenes::TStream::noise);
  for (int i = 0; i < 200; ++i)
    noise.emplace_back(static_cast<float>(i), static_cast<float>(random.uniform(0, 2000)));
  const std::vector<cv::Point2f> garbage(50, {std::numeric_limits<float>::quiet_NaN(), 0});
  const struct {
    const char* name;
    std::vector<cv::Point2f> points;
    double tol, least, most;
    bool success;
  } rows[] = {
      {"good", good, 2, 20, 1000, true},
      {"none", {}, 2, 20, 1000, false},
      {"two", {{0, 0}, {5, 5}}, 2, 20, 1000, false},
      {"three", {{0, 0}, {30, 10}, {60, 0}}, 2, 20, 1000, true},
      {"a point", {{3, 3}, {3, 3}, {3, 3}}, 2, 0, 1000, false},
      {"straight", straight, 2, 20, 1000, false},
      {"no consensus", noise, 2, 20, 1000, false},
      {"not numbers", garbage, 2, 20, 1000, false},
      {"radius too large", good, 0.5, 20, 40, false},
      {"tolerance 0", good, 0, 20, 1000, false},
      {"tolerance not a number", good, kNaN, 20, 1000, false},
      {"range upside down", good, 2, 200, 100, false},
      {"range not a number", good, 2, kNaN, 1000, false},
  };
  for (const auto& row : rows) {
    zelFit::TCircleFitFactory factory;
    EXPECT_EQ(factory.createFitType_ransacCircle(row.points, row.tol, row.least, row.most), row.success)
        << row.name;
    EXPECT_EQ(factory.result().success, row.success);
    EXPECT_EQ(factory.result().radiusPx > 0.0, row.success) << row.name;
  }
}

TEST(ExactLog, AgreesWithTheMathsLibrary) {
  for (double x = 1e-300; x < 1e300; x *= 1.37) {
    EXPECT_NEAR(weld::exactLog(x), std::log(x), 2e-15 * std::max(1.0, std::abs(std::log(x)))) << x;
  }
  for (double x = -700; x < 700; x += 0.37) EXPECT_NEAR(weld::exactExp(x) / std::exp(x), 1.0, 1e-14) << x;
  EXPECT_EQ(weld::exactLog(1.0), 0.0);
  EXPECT_EQ(weld::exactLog(0.0), -kInfinity);
  EXPECT_EQ(weld::exactLog(kInfinity), kInfinity);
  EXPECT_TRUE(std::isnan(weld::exactLog(-1.0)) && std::isnan(weld::exactLog(kNaN)) &&
              std::isnan(weld::exactExp(kNaN)));
  EXPECT_EQ(weld::exactExp(0.0), 1.0);
  EXPECT_EQ(weld::exactExp(-1e9), 0.0);
  EXPECT_EQ(weld::exactExp(1e9), kInfinity);
}

}  // namespace
