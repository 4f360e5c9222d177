#include "support/arc_tangent.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kPi = 3.141592653589793;

// Steps between two finite numbers of the same sign.
std::int64_t unitsApart(double a, double b) {
  std::int64_t bitsA = 0;
  std::int64_t bitsB = 0;
  std::memcpy(&bitsA, &a, sizeof(a));
  std::memcpy(&bitsB, &b, sizeof(b));
  return std::abs(bitsA - bitsB);
}

// Every binary order of magnitude, and both sides of the breakpoints of the reduction.
std::vector<double> arguments() {
  std::vector<double> xs;
  for (int exponent = -1022; exponent < 1023; exponent += 3) {
    for (const double mantissa : {1.0, 1.2345678901234567, 1.9999999999999998}) {
      xs.push_back(std::ldexp(mantissa, exponent));
    }
  }
  for (const double breakpoint : {0.4375, 0.6875, 1.1875, 2.4375, 0.5, 1.0, 1.5}) {
    xs.insert(xs.end(), {std::nextafter(breakpoint, 0.0), breakpoint, std::nextafter(breakpoint, 9.0)});
  }
  for (int i = 0; i < 4000; ++i) xs.push_back(i * 0.00137);
  return xs;
}

TEST(ArcTangent, isWithinOneUnitOfTheMathsLibraryAndOdd) {
  for (const double x : arguments()) {
    ASSERT_LE(unitsApart(weld::arcTangent(x), std::atan(x)), 1) << x;
    ASSERT_EQ(weld::arcTangent(-x), -weld::arcTangent(x)) << x;
  }
}

TEST(ArcTangent, limitsAndNaN) {
  EXPECT_EQ(weld::arcTangent(kInf), kPi / 2.0);
  EXPECT_EQ(weld::arcTangent(-kInf), -kPi / 2.0);
  EXPECT_EQ(weld::arcTangent(0.0), 0.0);
  EXPECT_TRUE(std::signbit(weld::arcTangent(-0.0)));
  EXPECT_TRUE(std::isnan(weld::arcTangent(kNaN)));
  EXPECT_EQ(weld::slopeToDeg(1.0), 45.0);
  EXPECT_EQ(weld::slopeToDeg(-1.0), -45.0);
}

TEST(ArcTangent2, agreesWithTheMathsLibraryInEveryDirection) {
  for (int degree = -180; degree <= 180; ++degree) {
    const double x = 1234.5 * std::cos(degree * kPi / 180.0);
    const double y = 1234.5 * std::sin(degree * kPi / 180.0);
    EXPECT_NEAR(weld::arcTangent2(y, x), std::atan2(y, x), 1e-15 * 4) << degree;
  }
  const double exact[][2] = {{1, 0}, {-1, 0}, {0, 1}, {0.0, -1}, {-0.0, -1}, {1, 1}, {1, -1}, {-1, -1}, {-1, 1}};
  for (const auto& [y, x] : exact) EXPECT_EQ(weld::arcTangent2(y, x), std::atan2(y, x)) << y << " " << x;
}

TEST(ArcTangent2, zeroVectorIsZeroAndNaNStaysNaN) {
  EXPECT_EQ(weld::arcTangent2(0.0, 0.0), 0.0);
  EXPECT_EQ(weld::arcTangent2(0.0, -0.0), 0.0);
  EXPECT_TRUE(std::isnan(weld::arcTangent2(kNaN, 1.0)));
  EXPECT_TRUE(std::isnan(weld::arcTangent2(1.0, kNaN)));
}

}  // namespace
