// Any points and any parameters give either no success or a line of finite numbers.
#include "bent_stripe.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>

namespace zelFit {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int kCoordinates[] = {INT_MIN, INT_MIN + 1, -65537, -65536, -1, 0, 1, 2, 3, 640, 65536, 65537, INT_MAX};
constexpr double kNumbers[] = {kNaN, -kInfinity, -1e300,    -90.0, 0.0,  5e-324,   1e-20,
                               0.5,  2.0,        89.999999, 90.0,  1e20, kInfinity};

template <typename T, std::size_t n>
T pick(scenes::TRandom& random, const T (&values)[n]) {
  return values[random.integer(0, static_cast<int>(n) - 1)];
}

TEST(LineFit, GarbageGivesFiniteLines) {
  scenes::TRandom random(5, scenes::TStream::layout);
  int successes = 0;
  for (int i = 0; i < 3000; ++i) {
    std::vector<cv::Point> points(static_cast<std::size_t>(random.integer(0, 70)));
    for (cv::Point& p : points) p = {pick(random, kCoordinates), pick(random, kCoordinates)};
    const double first = pick(random, kNumbers);
    const double second = pick(random, kNumbers);
    for (const TLineFitResult& line : {fitRobust(points, first), fitConsensus(points, first, second, 2.0)}) {
      ASSERT_TRUE(std::isfinite(line.slope) && std::isfinite(line.intercept)) << "round " << i;
      successes += line.success ? 1 : 0;
    }
  }
  EXPECT_GT(successes, 500);
}

}  // namespace
}  // namespace zelFit
