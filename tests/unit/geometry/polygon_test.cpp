#include "geometry/polygon.h"

#include "scenes/random.h"
#include "support/seed.h"

#include <opencv2/imgproc.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using TPoints = std::vector<cv::Point2f>;

// A stripe of kinks, steps and noise; on a coarse grid many points are equally far from a chord.
TPoints randomCurve(scenes::TRandom& random) {
  const auto uniform = [&](double low, double high) { return random.uniform(low, high); };
  const int count = static_cast<int>(uniform(1, 300));
  const bool isOnGrid = uniform(0, 1) < 0.5;
  const bool wanders = uniform(0, 1) < 0.3;  // back and forth, over its own points too
  const double noisePx = uniform(0, 1) < 0.3 ? 0.0 : uniform(0, 8);
  TPoints points;
  cv::Point2d at(uniform(0, 1280), uniform(0, 1024));
  double slope = uniform(-1, 1);
  for (int i = 0; i < count; ++i) {
    if (uniform(0, 1) < 0.03) slope = uniform(-1, 1);
    if (uniform(0, 1) < 0.01) at.y += uniform(-100, 100);
    at += cv::Point2d(wanders ? uniform(-3, 3) : 1.0, slope);
    const cv::Point2d p = at + cv::Point2d(0, uniform(-noisePx, noisePx));
    points.emplace_back(isOnGrid ? cv::Point2f(cv::Point(p)) : cv::Point2f(p));
  }
  if (uniform(0, 1) < 0.1) points.back() = points.front();
  return points;
}

std::vector<cv::Point> polygonOf(const TPoints& points, double epsilonPx) {
  return weld::toVector(weld::approximatePolygon(points, epsilonPx, weld::heapMemory()));
}

TEST(ApproximatePolygon, givesTheVerticesOfOpenCv) {
  const std::uint64_t seed = testing_support::seedOfCurrentTest();
  scenes::TRandom random(seed, scenes::TStream::layout);
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  int compared = 0;
  for (int n = 0; n < 5000; ++n) {
    const TPoints curve = randomCurve(random);
    for (const double epsilonPx : {0.0, 0.5, 3.0, 10.0}) {
      std::vector<cv::Point> expected;
      try {
        cv::approxPolyDP(curve, expected, epsilonPx, false);
      } catch (const cv::Exception&) {
        continue;  // of a stretch whose ends coincide
      }
      ASSERT_EQ(polygonOf(curve, epsilonPx), expected) << n << ", epsilon " << epsilonPx;
      ++compared;
    }
  }
  EXPECT_GT(compared, 15000);
}

// Many points as far from a chord as others, and boxes of every size.
TEST(ApproximatePolygon, longZigZagsAreCutAsOpenCvDoes) {
  for (const int half : {6, 7, 50}) {
    TPoints points;
    for (int x = 0; x < 20000; ++x) points.emplace_back(x, 2.5 * std::abs(x % (2 * half) - half) + x % 3 * 0.1);
    std::vector<cv::Point> expected;
    cv::approxPolyDP(points, expected, 3.0, false);
    EXPECT_EQ(polygonOf(points, 3.0), expected) << half;
  }
}

TEST(ApproximatePolygon, aStretchWhoseEndsCoincideIsStraight) {
  const TPoints loop{{0, 0}, {10, 0}, {15, 5}, {10, 0}, {20, 0}};
  EXPECT_FALSE(polygonOf(loop, 1.0).empty());
  EXPECT_TRUE(polygonOf({}, 1.0).empty());
}

}  // namespace
