#include "profile/local_fit.h"
#include "profile/circle_refine.h"
#include "scenes/random.h"

#include <gtest/gtest.h>

#include <cmath>

namespace weld {
namespace {

constexpr int kTrials = 400;

struct TSamples {
  std::vector<double> x, y, w;
  void add(double px, double py) { x.push_back(px), y.push_back(py), w.push_back(1.0); }
  TOrientedCentres centres() const { return {x, y, w}; }
  TSpan all() const { return {0, static_cast<int>(x.size())}; }
};

TLocalLines fit(const TSamples& s, const TLine& start, double noise2, double cutOff = 4.7) {
  TWindowSums sums(s.x.size() + 1, std::pmr::get_default_resource());
  return fitLocalLines(s.centres(), s.all(), {start, start, start, true}, {noise2, cutOff, 1e9, false}, sums);
}

// Variance of the height at the right end of a straight line, over the least possible one.
TEST(LocalLines, AreNearlyAsGoodAsLeastSquaresCanBe) {
  constexpr int kCount = 200;
  double sum = 0.0;
  for (std::uint64_t seed = 1; seed <= kTrials; ++seed) {
    scenes::TRandom random(seed, scenes::TStream::noise);
    TSamples s;
    for (int i = 0; i < kCount; ++i) s.add(i, 50 + 0.6 * scenes::toGaussian(random.next()));
    const TLocalLines lines = fit(s, TLine{0, 50}, 0.36);
    ASSERT_TRUE(lines.isFound);
    const double error = lines.right.offsetOf(kCount - 1, 50);
    sum += error * error / 0.36;
  }
  const double bound = 4.0 / kCount;  // 1/n + (n/2)^2 / (n^3/12)
  EXPECT_GE(bound / (sum / kTrials), 0.8);
}

TEST(LocalLines, ReadABowedSurfaceAtItsEnds) {
  scenes::TRandom random(7, scenes::TStream::noise);
  TSamples s;
  for (int i = 0; i < 600; ++i) {
    const double t = (i - 300) / 300.0;
    s.add(i, 100 + 8 * t * t + 0.3 * scenes::toGaussian(random.next()));
  }
  const TLocalLines lines = fit(s, TLine{300, 103}, 0.09, 30);
  ASSERT_TRUE(lines.isFound);
  EXPECT_NEAR(lines.left.offsetOf(0, 108), 0.0, 0.7);  // the straight line would miss by 5
  EXPECT_NEAR(lines.right.offsetOf(599, 108), 0.0, 0.7);
}

TEST(LocalLines, LeaveOutWildCentresAndSurviveABadStart) {
  scenes::TRandom random(9, scenes::TStream::noise);
  TSamples s;
  for (int i = 0; i < 300; ++i)
    s.add(i, i % 4 == 0 ? 60 + random.uniform(-40, 40) : 50 + 0.3 * scenes::toGaussian(random.next()));
  EXPECT_NEAR(fit(s, TLine{0, 50}, 0.09).whole.offsetOf(150, 50), 0.0, 0.15);
  EXPECT_NEAR(fit(s, TLine{0, 56}, 0.09).whole.offsetOf(150, 50), 0.0, 2.0);
  TSamples few;
  few.add(0, 1), few.add(1, 1);
  EXPECT_FALSE(fit(few, TLine{0, 1}, 0.09).isFound);
}

// Opens upwards, from -70 to -10 degrees, beside a plate that it touches at -90.
TSamples tube(double r, std::uint64_t seed, double noisePx) {
  scenes::TRandom random(seed, scenes::TStream::noise);
  TSamples s;
  for (int i = 0; i < 150; ++i) {
    const double a = (-88 + 70.0 * i / 149) * CV_PI / 180;
    const double d = r + noisePx * scenes::toGaussian(random.next());
    s.add(500 + d * std::cos(a), 300 + r + d * std::sin(a));
  }
  return s;
}

TEST(CircleRefine, ATangentSharedMakesTheRadiusSurer) {
  const TLine plate{300, 300};
  double freeSum = 0;
  double boundSum = 0;
  double claimed = 0;
  for (std::uint64_t seed = 1; seed <= kTrials; ++seed) {
    const TSamples s = tube(120, seed, 0.5);
    const TCircle start{501, 422, 122};
    const TCircleFit free = fitCircle(s.centres(), s.all(), start, freeCircle(), 0.25, 20);
    const TCircleFit bound =
        fitCircle(s.centres(), s.all(), touching(start, plate, true), circleOnLine(plate, true), 0.25, 20);
    ASSERT_TRUE(free.isFound && bound.isFound);
    EXPECT_NEAR(plate.offsetOf(bound.circle.x, bound.circle.y), bound.circle.r, 1e-9);
    freeSum += (free.circle.r - 120) * (free.circle.r - 120);
    boundSum += (bound.circle.r - 120) * (bound.circle.r - 120);
    claimed += bound.spread.rr * 0.25;
  }
  EXPECT_LT(boundSum, 0.5 * freeSum);
  EXPECT_NEAR(boundSum / claimed, 1.0, 0.2) << "the spread is that of the errors";
}

TEST(CircleRefine, AFilletTouchesBothLines) {
  const TLine left{0, 100, std::sqrt(0.5), std::sqrt(0.5)};
  const TLine right{400, 100, std::sqrt(0.5), -std::sqrt(0.5)};
  const auto circle = touching(60, left, right, false);
  ASSERT_TRUE(circle);
  EXPECT_NEAR(std::abs(left.offsetOf(circle->x, circle->y)), 60, 1e-9);
  EXPECT_NEAR(std::abs(right.offsetOf(circle->x, circle->y)), 60, 1e-9);
  EXPECT_LT(circle->y, 300.0) << "above the corner at (200, 300)";
  EXPECT_FALSE(touching(60, left, left, false));
}

}  // namespace
}  // namespace weld
