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
              {kInfinity, INT_MIN, INT_MIN},
              {-kInfinity, INT_MIN, INT_MIN},
              {kNaN, INT_MIN, INT_MIN}};
  for (const auto& row : rows) {
    EXPECT_EQ(truncToInt(row.value), row.truncated) << row.value;
    EXPECT_EQ(roundToInt(row.value), row.rounded) << row.value;
  }
}

}  // namespace
}  // namespace weld
