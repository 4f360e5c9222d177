#include "detectors/presence.h"

#include "run_detector.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

TWeldLineRes check(const cv::Mat& image, const TWeldParams& params, const TWeldLineRes& prevRes) {
  return run_detector::run(weld::checkStripePresence, image, params, prevRes);
}

TWeldLineRes previousOf(std::size_t count) {
  TWeldLineRes prevRes;
  prevRes.stripePts.assign(count, {5.0F, 5.0F});
  return prevRes;
}

TEST(CheckStripePresence, comparesTheNumbersOfPointsAsIntegers) {
  cv::Mat image = painted::dark(320, 100);
  painted::paintPiece(image, 100, 200, 50.0);
  const std::pair<std::size_t, bool> rows[] = {{0, false},   {1, true},    {99, true},  {100, true},   {199, true},
                                               {200, false}, {299, false}, {300, true}, {100000, true}};
  for (const auto& [before, isPresent] : rows) {
    const TWeldLineRes result = check(image, {}, previousOf(before));
    ASSERT_EQ(result.stripePts.size(), 100U);
    EXPECT_EQ(result.isFound, isPresent) << before;
    EXPECT_EQ(result.weldPos, cv::Point2f());
  }
  EXPECT_FALSE(check(painted::dark(320, 100), {}, previousOf(100)).isFound);
}

TEST(CheckStripePresence, searchesNearThePreviousStripeOnlyWhenAskedAndFound) {
  cv::Mat image = painted::dark();
  painted::paintPiece(image, 20, 620, 400.0);
  const struct {
    bool searchesNear, wasFound, usesRidges, seesStripe;
  } rows[] = {{false, true, false, true},
              {true, false, false, true},
              {true, true, false, false},
              {true, true, true, true}};
  for (const auto& row : rows) {
    TWeldParams params;
    params.flagPara1 = row.usesRidges;
    params.flagPara2 = row.searchesNear;
    TWeldLineRes prevRes = run_detector::foundWith(painted::linePoints(20, 620, 200.0));  // 200 rows above
    prevRes.isFound = row.wasFound;
    EXPECT_EQ(!check(image, params, prevRes).stripePts.empty(), row.seesStripe)
        << row.searchesNear << row.wasFound << row.usesRidges;
  }
}

}  // namespace
