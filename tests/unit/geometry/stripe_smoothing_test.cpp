#include "geometry/stripe_smoothing.h"

#include "geometry/segmentation.h"
#include "geometry/split_merge.h"
#include "support/painted_frame.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

using TPoints = std::vector<cv::Point2f>;

TEST(DropSteepJumps, comparesWithThePreviousInputPointStrictly) {
  const struct {
    const char* name;
    TPoints points, expected;
  } rows[] = {
      {"slope just below", {{0, 0}, {1, 3.9F}}, {{0, 0}, {1, 3.9F}}},
      {"slope equal", {{0, 0}, {1, 4}}, {{0, 0}}},
      {"falling as rising", {{0, 9}, {1, 5}, {2, 2}}, {{0, 9}, {2, 2}}},
      {"against the dropped point, not the kept one", {{0, 0}, {1, 50}, {2, 50}}, {{0, 0}, {2, 50}}},
      {"same column", {{0, 0}, {0, 0}, {1, 0}}, {{0, 0}, {1, 0}}},
      {"backwards", {{5, 0}, {4, 1}}, {{5, 0}, {4, 1}}},
  };
  for (const auto& row : rows) EXPECT_EQ(weld::dropSteepJumps(row.points, 4.0F), row.expected) << row.name;
}

TEST(SmoothStripe, reachesThreePointsBackAndTwoAhead) {
  const struct {
    std::vector<float> rows;
    std::vector<float> expected;
  } cases[] = {
      {{0, 6, 0, 0, 12, 0, 60}, {0, 6, 0, 3, 13, 0, 60}},
      {{600, 0, 0, 0, 0, 0, 0, 60}, {600, 0, 0, 100, 0, 10, 0, 60}},
  };
  for (const auto& c : cases) {
    TPoints points;
    for (const float row : c.rows) points.emplace_back(static_cast<float>(points.size()), row);
    std::vector<float> smoothed;
    for (const cv::Point2f p : weld::smoothStripe(points)) smoothed.push_back(p.y);
    EXPECT_EQ(smoothed, c.expected);
  }
}

TEST(SmoothStripe, emptiesListsOfFourToSixPoints) {
  for (const std::size_t count : {0U, 1U, 3U, 4U, 6U, 7U, 50U}) {
    const TPoints points = painted::linePoints(0, static_cast<int>(count), 9.0);
    const std::size_t expected = count >= 4 && count <= 6 ? 0 : count;
    EXPECT_EQ(weld::smoothStripe(points).size(), expected) << count;
  }
}

TEST(SmoothStripe, averagesColumnsLikeRows) {
  const TPoints smoothed = weld::smoothStripe(painted::linePoints(0, 20, 100.0, 1.0));
  for (std::size_t i = 3; i + 2 < smoothed.size(); ++i) {
    EXPECT_FLOAT_EQ(smoothed[i].x, static_cast<float>(i) - 0.5F);
    EXPECT_FLOAT_EQ(smoothed[i].y, static_cast<float>(i) + 99.5F);
  }
}

TEST(CleanStripe, onePointThatIsNotFiniteOrAbsurdlyFarGivesNothing) {
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  constexpr float kInf = std::numeric_limits<float>::infinity();
  const TPoints good = painted::linePoints(0, 200, 90.0, 0.2);
  ASSERT_FALSE(weld::cleanStripe(good).empty());
  for (const cv::Point2f bad :
       {cv::Point2f{kNaN, 0}, {100, kNaN}, {kInf, 0}, {100, -kInf}, {2e9F, 0}, {100, 2e9F}}) {
    for (const std::size_t at : {0U, 100U, 199U}) {
      TPoints points = good;
      points[at] = bad;
      EXPECT_TRUE(weld::cleanStripe(points).empty()) << bad << at;
      EXPECT_TRUE(weld::segmentStripe(points, {}).empty()) << bad << at;
      EXPECT_TRUE(weld::splitWeldLine(points, 2.0).empty()) << bad << at;
    }
  }
}

TEST(PointsBetween, pointsInTheBoundColumnsAreOutside) {
  const TPoints points{{9.9F, 1}, {10, 2}, {10.1F, 3}, {19.9F, 4}, {20, 5}, {15, 6}};
  EXPECT_EQ(weld::pointsBetween(points, 10, 20), (TPoints{{10.1F, 3}, {19.9F, 4}, {15, 6}}));
  EXPECT_TRUE(weld::pointsBetween(points, 20, 10).empty());
}

}  // namespace
