#include "profile/moments.h"

#include "profile/circle_refine.h"
#include "profile/local_fit.h"
#include "scenes/random.h"
#include "support/kernels/kernels.h"
#include "support/seed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <vector>

namespace weld {
namespace {

constexpr int kTrials = 400;

struct TCloud {
  std::vector<double> x, y, w;
  void add(double px, double py, double pw = 1.0) { x.push_back(px), y.push_back(py), w.push_back(pw); }
  TMoments moments() const { return {x, y, w, std::pmr::get_default_resource()}; }
  TOrientedCentres centres() const { return {x, y, w}; }
  TSpan all() const { return {0, static_cast<int>(x.size())}; }
};

double meanSquare(const TCloud& c, TSpan span, const std::function<double(double, double)>& offset) {
  double sum = 0.0;
  double weight = 0.0;
  for (auto i = static_cast<std::size_t>(span.first); i < static_cast<std::size_t>(span.last); ++i) {
    const double d = offset(c.x[i], c.y[i]);
    sum += c.w[i] * d * d;
    weight += c.w[i];
  }
  return sum / weight;
}

TEST(Moments, LineHasTheSmallestNormalDistances) {
  scenes::TRandom random(testing_support::seedOfCurrentTest(), scenes::TStream::noise);
  TCloud c;
  for (int x = 0; x < 1280; ++x) c.add(x, 500 + random.uniform(-200, 200), random.uniform(0.1, 1));
  const TMoments moments = c.moments();
  for (int n = 0; n < 200; ++n) {
    const int first = random.integer(0, 1270);
    const TSpan span{first, random.integer(first + 2, 1280)};
    const TLine line = moments.lineOf(span);
    const auto varianceAt = [&](double turn, double shift) {
      TLine other = line;
      other.dx = line.dx * std::cos(turn) - line.dy * std::sin(turn);
      other.dy = line.dy * std::cos(turn) + line.dx * std::sin(turn);
      return meanSquare(c, span, [&](double x, double y) { return other.offsetOf(x, y) + shift; });
    };
    const double variance = varianceAt(0, 0);
    EXPECT_NEAR(line.variance, variance, 1e-6 * (1 + variance));
    EXPECT_NEAR(moments.residualOf(span), variance * line.weight, 1e-4 * (1 + variance));
    for (const double turn : {-1e-3, 1e-3}) EXPECT_LE(variance, varianceAt(turn, 0) + 1e-7);
    for (const double shift : {-1e-2, 1e-2}) EXPECT_LE(variance, varianceAt(0, shift) + 1e-7);
  }
}

TEST(Moments, UprightAndLonePointsGiveALine) {
  TCloud upright;
  for (int i = 0; i < 9; ++i) upright.add(50 + 1e-6 * i, 10.0 * i);
  const TLine line = upright.moments().lineOf(upright.all());
  EXPECT_NEAR(line.dx, 0.0, 1e-6);
  EXPECT_NEAR(line.dy, 1.0, 1e-9);
  TCloud lone;
  lone.add(7, 9);
  const TLine level = lone.moments().lineOf(lone.all());
  EXPECT_DOUBLE_EQ(level.offsetOf(7, 12), 3.0);
  EXPECT_FALSE(lone.moments().circleOf(lone.all()));
}

TEST(Moments, CircleOfAnArcFarFromTheOrigin) {
  for (const double r : {20.0, 100.0, 900.0}) {
    for (const double openingDeg : {30.0, 90.0, 160.0}) {
      TCloud c;
      for (int i = 0; i < 20; ++i) c.add(i, 40);  // the sums before count too
      for (int i = 0; i <= 60; ++i) {
        const double a = (-90 - openingDeg / 2 + openingDeg * i / 60) * CV_PI / 180;
        c.add(1100 + r * std::cos(a), 900 + r * std::sin(a));
      }
      const auto circle = c.moments().circleOf(TSpan{20, 81});
      ASSERT_TRUE(circle) << r;
      EXPECT_NEAR(circle->r, r, 1e-3 * r) << openingDeg;
      EXPECT_NEAR(circle->x, 1100, 1e-2) << openingDeg;
      EXPECT_LT(circle->variance, 1e-4);
    }
  }
  TCloud straight;
  for (int i = 0; i < 50; ++i) straight.add(i, 3.0 * i);
  EXPECT_FALSE(straight.moments().circleOf(straight.all()));
}

// A short noisy arc: an algebraic fit that shrinks the radius would show.
TEST(Moments, CircleOfANoisyArcIsNotBiased) {
  double sum = 0.0;
  for (std::uint64_t seed = 1; seed <= kTrials; ++seed) {
    scenes::TRandom random(seed, scenes::TStream::noise);
    TCloud c;
    for (int i = 0; i < 90; ++i) {
      const double a = (60 + 60.0 * i / 89) * CV_PI / 180;
      const double d = 100 + scenes::toGaussian(random.next());
      c.add(700 - d * std::cos(a), 300 + d * std::sin(a));
    }
    const auto circle = c.moments().circleOf(c.all());
    ASSERT_TRUE(circle);
    sum += circle->r;
  }
  EXPECT_NEAR(sum / kTrials, 100.0, 1.0);
}

TEST(WeightedMoments, AreThoseOfTheNearPointsOnEveryProcessor) {
  scenes::TRandom random(testing_support::seedOfCurrentTest(), scenes::TStream::noise);
  TCloud c;
  for (int x = 0; x < 90; ++x) c.add(x, random.uniform(20, 40), random.uniform(0.1, 1));
  const TCubicCurve curve{10.0, 0.02, 30.0, -4.0, 3.0, 2.0, 0.9, 1.0 / 49.0};
  for (const int step : {1, 3}) {
    for (int count = 0; count < 90; ++count) {
      TMomentSum direct;
      for (int i = 0; i < count; i += step) {
        const auto at = static_cast<std::size_t>(i);
        const double t = (c.x[at] - 10.0) / 50.0;
        const double off = 0.9 * (c.y[at] - (30.0 - 4.0 * t + 3.0 * t * t + 2.0 * t * t * t));
        const double u = std::max(0.0, 1.0 - off * off / 49.0);
        direct.n += c.w[at] * u * u;
        direct.xy += c.w[at] * u * u * (c.x[at] - 40.0) * (c.y[at] - 30.0);
      }
      const TMomentPoints points{c.x.data(), c.y.data(), c.w.data(), count, step};
      const TMomentSum sum = kernels().moments.sumNear(points, curve, 40.0, 30.0);
      const TMomentSum baseline = kBaselineKernels.moments.sumNear(points, curve, 40.0, 30.0);
      EXPECT_NEAR(sum.n, direct.n, 1e-9) << count;
      EXPECT_NEAR(sum.xy, direct.xy, 1e-9) << count;
      EXPECT_EQ(std::memcmp(&sum, &baseline, sizeof sum), 0) << count;
    }
  }
}

TLocalLines fit(const TCloud& s, const TLine& start, double noise2, double cutOff = 4.7) {
  return fitLocalLines(s.centres(), s.all(), {start, start, start, true}, {noise2, cutOff, 1e9, false});
}

// Variance of the height at the right end of a straight line, over the least possible one.
TEST(LocalLines, AreNearlyAsGoodAsLeastSquaresCanBe) {
  constexpr int kCount = 200;
  double sum = 0.0;
  for (std::uint64_t seed = 1; seed <= kTrials; ++seed) {
    scenes::TRandom random(seed, scenes::TStream::noise);
    TCloud s;
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
  TCloud s;
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
  TCloud s;
  for (int i = 0; i < 300; ++i)
    s.add(i, i % 4 == 0 ? 60 + random.uniform(-40, 40) : 50 + 0.3 * scenes::toGaussian(random.next()));
  EXPECT_NEAR(fit(s, TLine{0, 50}, 0.09).whole.offsetOf(150, 50), 0.0, 0.15);
  EXPECT_NEAR(fit(s, TLine{0, 56}, 0.09).whole.offsetOf(150, 50), 0.0, 2.0);
  TCloud few;
  few.add(0, 1), few.add(1, 1);
  EXPECT_FALSE(fit(few, TLine{0, 1}, 0.09).isFound);
}

// Opens upwards, from -70 to -10 degrees, beside a plate that it touches at -90.
TCloud tube(double r, std::uint64_t seed, double noisePx) {
  scenes::TRandom random(seed, scenes::TStream::noise);
  TCloud s;
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
    const TCloud s = tube(120, seed, 0.5);
    const TCircle start{501, 422, 122};
    const TCircleFit free = fitCircle(s.centres(), s.all(), {start, freeCircle()}, 0.25, 20);
    const TCircleFit bound =
        fitCircle(s.centres(), s.all(), {touching(start, plate, true), circleOnLine(plate, true)}, 0.25, 20);
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
