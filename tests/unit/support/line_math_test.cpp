#include "support/line_math.h"

#include <gtest/gtest.h>

#include <climits>
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

}  // namespace
}  // namespace weld
