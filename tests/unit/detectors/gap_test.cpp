#include "detectors/gap.h"

#include "run_detector.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

using painted::paintPiece;
using run_detector::foundWith;

TWeldLineRes detect(const cv::Mat& image, const TWeldParams& params = {}, const TWeldLineRes& prevRes = {}) {
  return run_detector::run(weld::detectGapSeam, image, params, prevRes);
}

// A level stripe with the given columns missing.
cv::Mat stripeWithout(const std::vector<cv::Range>& missing) {
  cv::Mat image = painted::dark();
  paintPiece(image, 20, 620, 240.0);
  for (const cv::Range& range : missing) image.colRange(range).setTo(0);
  return image;
}

// The gap of the columns 300 .. 339 in a stripe of 14 degrees.
cv::Mat slopedFrame() {
  cv::Mat image = painted::dark();
  paintPiece(image, 20, 300, 100.0, 0.25);
  paintPiece(image, 340, 620, 180.0, 0.25);
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
  const cv::Mat image = slopedFrame();
  const float leftRow = 100.0F + 0.25F * (299 - 20);
  for (const auto& [pos, seamX] : {std::pair{0, 319.5F}, {1, 299.0F}, {2, 340.0F}, {3, 319.5F}, {-7, 319.5F}}) {
    TWeldParams params;
    params.weldPosType = static_cast<TWeldPosType>(pos);
    const TWeldLineRes first = detect(image, params);
    for (const TWeldLineRes& result : {first, detect(image, params, first)}) {
      ASSERT_TRUE(result.isFound) << pos;
      EXPECT_EQ(result.weldPos.x, seamX) << pos;
      EXPECT_NEAR(result.weldPos.y, leftRow, 0.6) << pos;
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

TEST(DetectGapSeam, firstDetectionBoundsAngleAndShareAndTrackingDoesNot) {
  cv::Mat image = slopedFrame();
  TWeldParams level;
  level.angleRange4 = {-10.0, 10.0};
  EXPECT_FALSE(detect(image, level).isFound);
  EXPECT_TRUE(detect(image, level, detect(image)).isFound);

  TWeldParams complete;
  complete.dPara3 = 1.0;  // every point on the line
  EXPECT_TRUE(detect(image, complete).isFound);
  image(cv::Rect(340, 150, 60, 120)).setTo(0);
  paintPiece(image, 340, 400, 300.0);
  EXPECT_FALSE(detect(image, complete).isFound);
}

TEST(DetectGapSeam, stripePiecesBesideTheLineAreNoGapEdges) {
  cv::Mat image = stripeWithout({{300, 340}});
  paintPiece(image, 300, 340, 246.0);  // 6 rows under the line, beyond the tolerance of 5
  EXPECT_EQ(detect(image).weldPos.x, 319.5F);
  TWeldParams tolerant;
  tolerant.dPara2 = 7.0;
  EXPECT_FALSE(detect(image, tolerant).isFound);
}

TEST(DetectGapSeam, previousStripeTooShortOrTooFarAwayFindsNothing) {
  const cv::Mat image = stripeWithout({{300, 340}});
  EXPECT_TRUE(detect(image, {}, foundWith(painted::linePoints(250, 401, 240.0))).stripePts.empty());
  EXPECT_EQ(detect(image, {}, foundWith(painted::linePoints(250, 402, 240.0))).weldPos.x, 319.5F);
  EXPECT_TRUE(detect(image, {}, foundWith(painted::linePoints(20, 620, 100.0))).stripePts.empty());
}

}  // namespace
