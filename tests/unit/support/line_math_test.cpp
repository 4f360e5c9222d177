#include "support/line_math.h"

#include "support/arc_tangent.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

namespace weld {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(LineMath, DivisorsKeepAwayFromZero) {
  const double rows[][2] = {{0.0, 1e-5},     {-0.0, 1e-5},      {1e-5, 1e-5},       {-1e-5, -1e-5},
                            {0.99e-5, 1e-5}, {-0.99e-5, -1e-5}, {1.01e-5, 1.01e-5}, {-1.01e-5, -1.01e-5},
                            {5e-324, 1e-5},  {-5e-324, -1e-5},  {7.0, 7.0},         {-kInfinity, -kInfinity}};
  for (const auto& row : rows) EXPECT_EQ(guardDivisor(row[0]), row[1]) << row[0];
}

struct TConversion {
  double value;
  int truncated;
  int rounded;
};

TEST(LineMath, IntegersEndWhereThirtyTwoBitsEnd) {
  const TConversion rows[] = {
      {0.5, 0, 0},
      {1.5, 1, 2},
      {2.5, 2, 2},
      {-0.5, 0, 0},
      {-1.5, -1, -2},
      {-0.999, 0, -1},
      {2147483647.0, INT_MAX, INT_MAX},
      {2147483647.4, INT_MAX, INT_MAX},
      {2147483647.5, INT_MAX, INT_MIN},
      {2147483647.999, INT_MAX, INT_MIN},
      {2147483648.0, INT_MIN, INT_MIN},
      {-2147483648.0, INT_MIN, INT_MIN},
      {-2147483647.5, -INT_MAX, INT_MIN},
      {-2147483648.999, INT_MIN, INT_MIN},
      {-2147483649.0, INT_MIN, INT_MIN},
      {1e300, INT_MIN, INT_MIN},
      {kInfinity, INT_MIN, INT_MIN},
      {-kInfinity, INT_MIN, INT_MIN},
      {kNaN, INT_MIN, INT_MIN},
  };
  for (const TConversion& row : rows) {
    EXPECT_EQ(truncToInt(row.value), row.truncated) << row.value;
    EXPECT_EQ(roundToInt(row.value), row.rounded) << row.value;
  }
}

TEST(LineMath, DistanceIsPerpendicular) {
  EXPECT_EQ(pointLineDistance(0.75, 1.0, 0.0, 6.0), 4.0);
  EXPECT_EQ(pointLineDistance(0.0, -2.0, 1e6, 3.0), 5.0);
}

TEST(ArcTangent, AgreesWithTheCLibrary) {
  for (double x = 1e-9; x < 1e12; x *= 1.07) {
    for (const double signedX : {x, -x}) {
      const double expected = std::atan(signedX);
      EXPECT_NEAR(arcTangent(signedX), expected, 3e-16 * std::abs(expected)) << signedX;
    }
  }
  EXPECT_EQ(arcTangent(kInfinity), std::atan(kInfinity));
  EXPECT_TRUE(std::isnan(arcTangent(kNaN)));
  const double coordinates[] = {-kInfinity, -3.0, -0.0, 0.0, 1e-300, 2.0};
  for (const double y : coordinates) {
    for (const double x : {-2.0, -0.5, 1e-300, 0.7, 4.0}) {
      EXPECT_NEAR(arcTangent2(y, x), std::atan2(y, x), 1e-15) << y << ", " << x;
    }
  }
}

}  // namespace
}  // namespace weld
