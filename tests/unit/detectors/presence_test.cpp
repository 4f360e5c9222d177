#include "detectors/presence.h"

#include "support/painted_frame.h"

#include <gtest/gtest.h>

namespace {

TWeldLineRes check(const cv::Mat& image, const TWeldParams& params, const TWeldLineRes& prevRes) {
  weld::TDetectorObject object;
  object.setWeldParameters(params);
  return weld::checkStripePresence(object, image, prevRes, cv::Mat());
}

TWeldLineRes previousOf(std::size_t count, bool isFound = false) {
  TWeldLineRes prevRes;
  prevRes.isFound = isFound;
  prevRes.stripePts.assign(count, {5.0F, 5.0F});
  return prevRes;
}

TEST(CheckStripePresence, comparesTheNumbersOfPointsAsIntegers) {
  cv::Mat image = painted::dark(320, 100);
  painted::paintPiece(image, 100, 200, 50.0);
  const struct {
    std::size_t before;
    bool isPresent;
  } rows[] = {{0, false},  {1, true},    {50, true},   {99, true},   {100, true}, {101, true},
              {199, true}, {200, false}, {250, false}, {299, false}, {300, true}, {100000, true}};
  for (const auto& row : rows) {
    for (const bool wasFound : {false, true}) {
      const TWeldLineRes result = check(image, {}, previousOf(row.before, wasFound));
      ASSERT_EQ(result.stripePts.size(), 100U);
      EXPECT_EQ(result.isFound, row.isPresent) << row.before;
      EXPECT_EQ(result.weldPos, cv::Point2f());
    }
  }
}

TEST(CheckStripePresence, blankFrameIsAbsentWhateverCameBefore) {
  for (const bool usesRidges : {false, true}) {
    TWeldParams params;
    params.flagPara1 = usesRidges;
    const TWeldLineRes result = check(painted::dark(320, 100), params, previousOf(100, true));
    EXPECT_FALSE(result.isFound);
    EXPECT_TRUE(result.stripePts.empty());
  }
}

TEST(CheckStripePresence, searchesNearThePreviousStripeOnlyWhenAskedAndFound) {
  cv::Mat image = painted::dark();
  painted::paintPiece(image, 20, 620, 400.0);
  const struct {
    bool searchesNear;
    bool wasFound;
    bool usesRidges;
    bool seesStripe;
  } rows[] = {{false, false, false, true},
              {false, true, false, true},
              {true, false, false, true},
              {true, true, false, false},
              {true, true, true, true}};
  for (const auto& row : rows) {
    TWeldParams params;
    params.flagPara1 = row.usesRidges;
    params.flagPara2 = row.searchesNear;
    TWeldLineRes prevRes;
    prevRes.isFound = row.wasFound;
    prevRes.stripePts = painted::linePoints(20, 620, 200.0);  // 200 rows above the stripe
    EXPECT_EQ(!check(image, params, prevRes).stripePts.empty(), row.seesStripe)
        << row.searchesNear << row.wasFound << row.usesRidges;
  }
}

TEST(CheckStripePresence, ridgesSeeTheThinBrightStripeThatEdgePairsMiss) {
  cv::Mat image = painted::dark(320, 100);
  image.row(50).setTo(250);
  image.row(49).setTo(120);
  image.row(51).setTo(120);
  TWeldParams params;
  EXPECT_TRUE(check(image, params, previousOf(300)).stripePts.empty());
  params.flagPara1 = true;
  const TWeldLineRes result = check(image, params, previousOf(300));
  EXPECT_TRUE(result.isFound);
  EXPECT_GT(result.stripePts.size(), 300U);
}

}  // namespace
