#include "support/arc_tangent.h"

#include "support/line_math.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A number's place among all numbers of its sign.
std::int64_t placeOf(double number) {
  std::int64_t bits = 0;
  std::memcpy(&bits, &number, sizeof number);
  return bits;
}

// The offset of a point is taken to the last place that counts, and beyond it.
TEST(NearLine, saysWhatTheDistanceSays) {
  for (const double k : {0.0, 0.3, -7.25, 1e5, 1e120}) {
    for (const double tolPx : {2.0, 5.3, 1e-9, 0.0, -1.0, 1e-310, HUGE_VAL, std::nan("")}) {
      const weld::TNearLine isNear(k, 3.0, tolPx);
      double y = 3.0 - tolPx * std::sqrt(k * k + 1.0);
      for (int ulp = 0; ulp < 8; ++ulp) y = std::nextafter(y, -HUGE_VAL);
      for (int ulp = 0; ulp < 16; ++ulp, y = std::nextafter(y, HUGE_VAL))
        EXPECT_EQ(isNear(0.0, y), weld::pointLineDistance(k, 3.0, 0.0, y) < tolPx)
            << k << ' ' << tolPx << ' ' << y;
    }
  }
}

TEST(ArcTangent, isWithinOneUnitOfTheMathsLibraryAndOdd) {
  std::vector<double> xs{0.0,
                         kInf};  // every order of magnitude, and both sides of the breakpoints of the reduction
  for (int exponent = -1022; exponent < 1023; exponent += 3) {
    for (const double mantissa : {1.0, 1.2345678901234567, 1.9999999999999998}) {
      xs.push_back(std::ldexp(mantissa, exponent));
    }
  }
  for (const double breakpoint : {0.4375, 0.6875, 1.1875, 2.4375, 0.5, 1.0, 1.5}) {
    xs.insert(xs.end(), {std::nextafter(breakpoint, 0.0), breakpoint, std::nextafter(breakpoint, 9.0)});
  }
  for (int i = 0; i < 4000; ++i) xs.push_back(i * 0.00137);
  for (const double x : xs) {
    ASSERT_LE(std::abs(placeOf(weld::arcTangent(x)) - placeOf(std::atan(x))), 1) << x;
    ASSERT_EQ(placeOf(weld::arcTangent(-x)), placeOf(-weld::arcTangent(x))) << x;
  }
  EXPECT_TRUE(std::isnan(weld::arcTangent(kNaN)));
  EXPECT_EQ(weld::slopeToDeg(-1.0), -45.0);
}

TEST(ArcTangent2, agreesWithTheMathsLibraryInEveryDirection) {
  constexpr double kPi = 3.141592653589793;
  for (int degree = -180; degree <= 180; ++degree) {
    const double x = 1234.5 * std::cos(degree * kPi / 180.0);
    const double y = 1234.5 * std::sin(degree * kPi / 180.0);
    EXPECT_NEAR(weld::arcTangent2(y, x), std::atan2(y, x), 4e-15) << degree;
  }
  const double exact[][2] = {{1, 0}, {-1, 0}, {0, 1},   {0.0, -1}, {-0.0, -1},
                             {1, 1}, {1, -1}, {-1, -1}, {-1, 1},   {0.0, 0.0}};
  for (const auto& [y, x] : exact) EXPECT_EQ(weld::arcTangent2(y, x), std::atan2(y, x)) << y << " " << x;
  EXPECT_EQ(weld::arcTangent2(0.0, -0.0), 0.0);
  EXPECT_TRUE(std::isnan(weld::arcTangent2(kNaN, 1.0)));
  EXPECT_TRUE(std::isnan(weld::arcTangent2(1.0, kNaN)));
}

TEST(LineMath, DivisorsKeepAwayFromZero) {
  const double rows[][2] = {{0.0, 1e-5},     {-0.0, 1e-5},      {1e-5, 1e-5},       {-1e-5, -1e-5},
                            {0.99e-5, 1e-5}, {-0.99e-5, -1e-5}, {1.01e-5, 1.01e-5}, {-1.01e-5, -1.01e-5},
                            {5e-324, 1e-5},  {-5e-324, -1e-5},  {7.0, 7.0},         {-kInf, -kInf}};
  for (const auto& row : rows) EXPECT_EQ(weld::guardDivisor(row[0]), row[1]) << row[0];
}

TEST(LineMath, IntegersEndWhereThirtyTwoBitsEnd) {
  const struct {
    double value;
    int truncated, rounded;
  } rows[] = {{0.5, 0, 0},
              {1.5, 1, 2},
              {2.5, 2, 2},
              {-1.5, -1, -2},
              {-0.999, 0, -1},
              {2147483647.4, INT_MAX, INT_MAX},
              {2147483647.5, INT_MAX, INT_MIN},
              {2147483648.0, INT_MIN, INT_MIN},
              {-2147483647.5, -INT_MAX, INT_MIN},
              {-2147483648.999, INT_MIN, INT_MIN},
              {-2147483649.0, INT_MIN, INT_MIN},
              {kInf, INT_MIN, INT_MIN},
              {-kInf, INT_MIN, INT_MIN},
              {kNaN, INT_MIN, INT_MIN}};
  for (const auto& row : rows) {
    EXPECT_EQ(weld::truncToInt(row.value), row.truncated) << row.value;
    EXPECT_EQ(weld::roundToInt(row.value), row.rounded) << row.value;
  }
}

}  // namespace
