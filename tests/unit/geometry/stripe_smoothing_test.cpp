#include "geometry/stripe_smoothing.h"

#include "support/painted_frame.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>
#include <vector>

namespace {

using TPoints = std::vector<cv::Point2f>;
using weld::heapMemory;

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
  for (const auto& row : rows)
    EXPECT_EQ(weld::toVector(weld::dropSteepJumps(row.points, 4.0F, heapMemory())), row.expected) << row.name;
}

TEST(SmoothStripe, reachesThreePointsBackAndTwoAheadAndEmptiesListsOfFourToSixPoints) {
  const std::pair<std::vector<float>, std::vector<float>> rows[] = {
      {{}, {}},
      {{5, 6, 9}, {5, 6, 9}},
      {{5, 6, 9, 9}, {}},
      {{5, 6, 9, 9, 9, 9}, {}},
      {{0, 6, 0, 0, 12, 0, 60}, {0, 6, 0, 3, 13, 0, 60}},
      {{600, 0, 0, 0, 0, 0, 0, 60}, {600, 0, 0, 100, 0, 10, 0, 60}},
  };
  for (const auto& [before, expected] : rows) {
    TPoints points;
    for (const float row : before) points.emplace_back(row + 10.0F, row);
    std::vector<float> smoothed;
    for (const cv::Point2f p : weld::smoothStripe(points, heapMemory())) {
      smoothed.push_back(p.y);
      EXPECT_FLOAT_EQ(p.x, p.y + 10.0F) << "columns like rows";
    }
    EXPECT_EQ(smoothed, expected) << testing::PrintToString(before);
  }
}

TEST(CleanStripe, onePointThatIsNotFiniteOrAbsurdlyFarGivesNothing) {
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  constexpr float kInf = std::numeric_limits<float>::infinity();
  const TPoints good = painted::bentPoints(0, 100, 200, 90.0, 0.2, -0.5);
  const auto counts = [](const TPoints& points) {
    std::vector<TStripePiece> pieces(1);
    std::vector<TSplitAtom> atoms(1);
    TBaseWeld().segmentStripe(points, pieces, 5.0F, 200.0F, 20.0F, 3.0F);
    TBaseWeld().splitWeldLine2lines(points, atoms, cv::Mat());
    return std::pair{pieces.size(), atoms.size()};
  };
  ASSERT_EQ(counts(good), (std::pair<std::size_t, std::size_t>{2, 2}));
  for (const cv::Point2f bad :
       {cv::Point2f{kNaN, 0}, {100, kNaN}, {kInf, 0}, {100, -kInf}, {2e9F, 0}, {100, 2e9F}}) {
    for (const std::size_t at : {0U, 100U, 199U}) {
      TPoints points = good;
      points[at] = bad;
      EXPECT_EQ(counts(points), (std::pair<std::size_t, std::size_t>{0, 0})) << bad << at;
    }
  }
}

TEST(PointsBetween, pointsInTheBoundColumnsAreOutside) {
  const TPoints points{{9.9F, 1}, {10, 2}, {10.1F, 3}, {19.9F, 4}, {20, 5}, {15, 6}};
  EXPECT_EQ(weld::toVector(weld::pointsBetween(points, {10, 20}, false, heapMemory())),
            (TPoints{{10.1F, 3}, {19.9F, 4}, {15, 6}}));
  EXPECT_TRUE(weld::pointsBetween(points, {20, 10}, false, heapMemory()).empty());
}

}  // namespace
