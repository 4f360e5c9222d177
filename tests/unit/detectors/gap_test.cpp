#include "detectors/gap.h"

#include "support/painted_frame.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using painted::paintPiece;

TWeldLineRes detect(const cv::Mat& image, const TWeldParams& params = {}, const TWeldLineRes& prevRes = {}) {
  weld::TDetectorObject object;
  object.setWeldParameters(params);
  return weld::detectGapSeam(object, image, prevRes, cv::Mat());
}

// A level stripe with the given columns missing.
cv::Mat stripeWithout(const std::vector<cv::Range>& missing, double y = 240.0) {
  cv::Mat image = painted::dark();
  paintPiece(image, 20, 620, y);
  for (const cv::Range& range : missing) image.colRange(range).setTo(0);
  return image;
}

TEST(DetectGapSeam, missingColumnsMeasureOneMoreAndTheMinimumIsAccepted) {
  const struct {
    const char* name;
    std::vector<cv::Range> missing;
    double minGapPx;
    bool isFound;
    float seamX;
  } rows[] = {
      {"no gap", {}, 10.0, false, 0},
      {"9 columns measure 10", {{300, 309}}, 10.0, true, 304},
      {"8 columns measure 9", {{300, 308}}, 10.0, false, 0},
      {"midpoint keeps its half pixel", {{300, 310}}, 10.0, true, 304.5F},
      {"neighbours measure 1", {}, 1.0, true, 20.5F},
      {"the wider one", {{200, 220}, {400, 430}}, 10.0, true, 414.5F},
      {"of equally wide ones the left one", {{200, 230}, {400, 430}}, 10.0, true, 214.5F},
  };
  for (const auto& row : rows) {
    TWeldParams params;
    params.dPara8 = row.minGapPx;
    const TWeldLineRes result = detect(stripeWithout(row.missing), params);
    ASSERT_EQ(result.isFound, row.isFound) << row.name;
    EXPECT_EQ(result.weldPos.x, row.seamX) << row.name;
    EXPECT_FALSE(result.stripePts.empty()) << row.name;
  }
}

TEST(DetectGapSeam, positionChoosesTheColumnButTheRowIsThatOfTheLeftEdge) {
  cv::Mat image = painted::dark();
  paintPiece(image, 20, 300, 100.0, 0.25);
  paintPiece(image, 340, 620, 180.0, 0.25);
  const float leftRow = 100.0F + 0.25F * (299 - 20);
  const struct {
    int pos;
    float seamX;
  } rows[] = {{0, 319.5F}, {1, 299.0F}, {2, 340.0F}, {3, 319.5F}, {4, 319.5F}, {-7, 319.5F}, {99, 319.5F}};
  for (const auto& row : rows) {
    TWeldParams params;
    params.weldPosType = static_cast<TWeldPosType>(row.pos);
    const TWeldLineRes first = detect(image, params);
    const TWeldLineRes tracked = detect(image, params, first);
    for (const TWeldLineRes& result : {first, tracked}) {
      ASSERT_TRUE(result.isFound) << row.pos;
      EXPECT_EQ(result.weldPos.x, row.seamX) << row.pos;
      EXPECT_NEAR(result.weldPos.y, leftRow, 0.6) << row.pos;
      EXPECT_EQ(result.auxVal1 + result.auxVal2 + result.auxVal3 + result.auxVal4 + result.trackVal, 0.0);
    }
  }
}

TEST(DetectGapSeam, seamInTheFirstColumnIsNotFound) {
  cv::Mat image = painted::dark();
  paintPiece(image, 0, 620, 240.0);
  image.colRange(1, 41).setTo(0);
  TWeldParams params;
  params.weldPosType = TWeldPosType::left;
  EXPECT_FALSE(detect(image, params).isFound);
  params.weldPosType = TWeldPosType::right;
  EXPECT_EQ(detect(image, params).weldPos.x, 41.0F);
}

TEST(DetectGapSeam, firstDetectionBoundsTheAngleAndTrackingDoesNot) {
  cv::Mat image = painted::dark();
  paintPiece(image, 20, 300, 100.0, 0.25);
  paintPiece(image, 340, 620, 180.0, 0.25);
  TWeldParams params;
  params.angleRange4 = {-10.0, 10.0};  // the stripe has 14 degrees
  EXPECT_FALSE(detect(image, params).isFound);
  EXPECT_TRUE(detect(image, params, detect(image)).isFound);

  params = {};
  params.dPara3 = 1.0;  // every point on the line
  EXPECT_TRUE(detect(image, params).isFound);
  paintPiece(image, 340, 400, 300.0);
  image(cv::Rect(340, 150, 60, 120)).setTo(0);
  EXPECT_FALSE(detect(image, params).isFound);
}

TEST(DetectGapSeam, stripePiecesBesideTheLineAreNoGapEdges) {
  cv::Mat image = stripeWithout({{300, 340}});
  paintPiece(image, 300, 340, 246.0);  // 6 rows under the line, beyond the tolerance of 5
  EXPECT_EQ(detect(image).weldPos.x, 319.5F);
  TWeldParams tolerant;
  tolerant.dPara2 = 7.0;
  EXPECT_FALSE(detect(image, tolerant).isFound);
}

TEST(DetectGapSeam, previousStripeOfOneHundredAndFiftyColumnsOrLessFindsNothing) {
  const cv::Mat image = stripeWithout({{300, 340}});
  TWeldLineRes prevRes;
  prevRes.isFound = true;
  prevRes.stripePts = painted::linePoints(250, 401, 240.0);
  EXPECT_TRUE(detect(image, {}, prevRes).stripePts.empty());
  prevRes.stripePts = painted::linePoints(250, 402, 240.0);
  EXPECT_EQ(detect(image, {}, prevRes).weldPos.x, 319.5F);
}

TEST(DetectGapSeam, blankFrameAndAnotherRowGiveNothing) {
  EXPECT_FALSE(detect(painted::dark()).isFound);
  TWeldLineRes prevRes;
  prevRes.isFound = true;
  prevRes.stripePts = painted::linePoints(20, 620, 100.0);  // the band ends 60 rows below, the stripe is 140 away
  EXPECT_TRUE(detect(stripeWithout({{300, 340}}), {}, prevRes).stripePts.empty());
}

}  // namespace
