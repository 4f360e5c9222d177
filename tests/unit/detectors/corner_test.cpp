#include "detectors/corner.h"

#include "detectors/corner_flanks.h"
#include "support/painted_frame.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using TPoints = std::vector<cv::Point2f>;

const cv::Size kFrame{640, 480};

TPoints joined(TPoints first, const TPoints& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

TPoints vPoints(double k = 0.5) {
  return joined(painted::linePoints(40, 320, 280.0 - 280.0 * k, k), painted::linePoints(320, 600, 280.0, -k));
}

weld::TCornerParams paramsOf(const TWeldParams& params = {}) {
  return weld::cornerParams(params);
}

TWeldLineRes detect(const cv::Mat& image, const TWeldParams& params = {}, const TWeldLineRes& prevRes = {}) {
  weld::TDetectorObject object;
  object.setWeldParameters(params);
  return weld::detectCornerSeam(object, image, prevRes, cv::Mat());
}

bool hasSubPixelRows(const TWeldLineRes& result) {
  for (const cv::Point2f& p : result.stripePts) {
    if (p.y != std::floor(p.y)) return true;
  }
  return false;
}

TEST(FindFlankPairRansac, findsEachFlankInsideItsRange) {
  const auto flanks = weld::findFlankPairRansac(vPoints(), paramsOf());
  ASSERT_TRUE(flanks);
  EXPECT_NEAR(flanks->left.k, 0.5, 0.02);
  EXPECT_NEAR(flanks->right.k, -0.5, 0.02);

  TWeldParams onlyRight;
  onlyRight.angleRange1Min = 40.0;  // no left flank is that steep
  EXPECT_FALSE(weld::findFlankPairRansac(vPoints(), paramsOf(onlyRight)));
  TWeldParams onlyLeft;
  onlyLeft.angleRange2Max = -40.0;
  EXPECT_FALSE(weld::findFlankPairRansac(vPoints(), paramsOf(onlyLeft)));
  EXPECT_FALSE(weld::findFlankPairRansac({}, paramsOf()));
}

TEST(FindFlankPairRansac, rightFlankComesFirstWhenTheLeftOneIsTooSmallAShareOfAllPoints) {
  // 100 of 700 points are on the left flank: 14 % of all, but 100 % of what the right flank leaves over.
  const TPoints points =
      joined(painted::linePoints(20, 70, 100.0, 0.5), painted::linePoints(70, 630, 400.0, -0.5));
  TWeldParams params;
  params.dPara3 = 0.5;
  const auto flanks = weld::findFlankPairRansac(points, paramsOf(params));
  ASSERT_TRUE(flanks);
  EXPECT_NEAR(flanks->left.k, 0.5, 0.03);
  EXPECT_NEAR(flanks->right.k, -0.5, 0.03);
}

TEST(FindFlankPairByPolyline, takesTheLongestPieceOfEachRange) {
  TPoints points = joined(painted::linePoints(20, 140, 100.0, 0.4), painted::linePoints(140, 200, 148.0, -0.4));
  points = joined(joined(points, painted::linePoints(200, 400, 124.0, 0.6)),
                  painted::linePoints(400, 620, 244.0, -0.5));
  const auto flanks = weld::findFlankPairByPolyline(points, paramsOf());
  ASSERT_TRUE(flanks);
  EXPECT_NEAR(flanks->left.k, 0.6, 0.03);
  EXPECT_NEAR(flanks->right.k, -0.5, 0.03);
  EXPECT_FALSE(weld::findFlankPairByPolyline(painted::linePoints(20, 400, 100.0, 0.4), paramsOf()));
}

TEST(FindFlankPairByPolyline, firstPieceStandsInWhereNoneQualifies) {
  TWeldParams params;
  params.angleRange2Min = -80.0;
  params.angleRange2Max = -60.0;
  const auto flanks = weld::findFlankPairByPolyline(vPoints(), paramsOf(params));
  ASSERT_TRUE(flanks);
  EXPECT_NEAR(flanks->right.k, 0.5, 0.02);
}

TEST(FindFlankPairNear, prefersThePiecesNearThePreviousFlanks) {
  // Two V side by side: a flat one, wider, and a steep one.
  TPoints points = joined(painted::linePoints(10, 200, 150.0, 0.2), painted::linePoints(200, 390, 188.0, -0.2));
  points = joined(joined(points, painted::linePoints(390, 500, 150.0, 0.7)),
                  painted::linePoints(500, 620, 227.0, -0.7));
  const struct {
    double previousK;
    double expectedK;
  } rows[] = {{0.2, 0.2}, {0.7, 0.7}, {0.65, 0.7}, {0.25, 0.2}};
  for (const auto& row : rows) {
    const auto flanks = weld::findFlankPairNear(points, row.previousK, -row.previousK, paramsOf());
    ASSERT_TRUE(flanks) << row.previousK;
    EXPECT_NEAR(flanks->left.k, row.expectedK, 0.05) << row.previousK;
    EXPECT_NEAR(flanks->right.k, -row.expectedK, 0.05) << row.previousK;
  }
  EXPECT_FALSE(weld::findFlankPairNear(painted::linePoints(10, 400, 150.0, 0.2), 0.2, -0.2, paramsOf()));
  const TPoints hill =
      joined(painted::linePoints(10, 300, 300.0, -0.3), painted::linePoints(300, 600, 213.0, 0.3));
  EXPECT_FALSE(weld::findFlankPairNear(hill, 0.3, -0.3, paramsOf())) << "the left flank must lie left";
}

TEST(TrimFlankOverlap, cutsWhatReachesBeyondTheFarEndOfTheOther) {
  weld::TFlankPair flanks;
  flanks.left.k = 0.5;
  flanks.left.b = 120.0;
  flanks.right.k = -0.5;
  flanks.right.b = 440.0;
  flanks.left.isValid = flanks.right.isValid = true;
  // The left flank runs past the right one's last column 500, the right one begins before the left one's first.
  flanks.left.inlierPts = painted::linePoints(100, 560, 170.0, 0.5);
  flanks.right.inlierPts = painted::linePoints(80, 501, 400.0, -0.5);
  flanks.right.inlierPts.back().x = 500.75F;  // counts as column 500

  weld::TFlankPair trimmed = flanks;
  weld::trimFlankOverlap(trimmed, kFrame, paramsOf());
  EXPECT_EQ(trimmed.left.inlierPts.back().x, 500.0F);
  EXPECT_EQ(trimmed.right.inlierPts.front().x, 100.0F);
  EXPECT_TRUE(trimmed.left.isValid && trimmed.right.isValid);

  const auto expectUntouched = [](weld::TFlankPair pair, cv::Size size, const char* name) {
    const std::size_t left = pair.left.inlierPts.size();
    const std::size_t right = pair.right.inlierPts.size();
    weld::trimFlankOverlap(pair, size, paramsOf());
    EXPECT_EQ(pair.left.inlierPts.size(), left) << name;
    EXPECT_EQ(pair.right.inlierPts.size(), right) << name;
  };
  expectUntouched(flanks, {320, 480}, "intersection in column 320 of 320");
  expectUntouched(flanks, {640, 280}, "intersection in row 280 of 280");
  weld::TFlankPair invalid = flanks;
  invalid.right.isValid = false;
  expectUntouched(invalid, kFrame, "right flank invalid");
  weld::TFlankPair few = flanks;
  few.left.inlierPts.erase(few.left.inlierPts.begin(), few.left.inlierPts.end() - 9);
  expectUntouched(few, kFrame, "9 points on the left");
}

TEST(IntersectionOf, parallelFlanksMeetFarOutside) {
  weld::TFlankPair flanks;
  flanks.left.k = 0.3;
  flanks.right.k = 0.3;
  flanks.left.b = 10.0;
  flanks.right.b = 60.0;
  EXPECT_EQ(weld::intersectionOf(flanks).x, -5e6F);
  flanks.right.k = 0.3 - 1e-9;
  EXPECT_EQ(weld::intersectionOf(flanks).x, 5e6F);
}

TEST(DetectCornerSeam, reportsCornerFlanksAndAngle) {
  const cv::Mat image = painted::cornerFrame();
  const TWeldLineRes first = detect(image);
  const TWeldLineRes tracked = detect(image, {}, first);
  for (const TWeldLineRes& result : {first, tracked}) {
    ASSERT_TRUE(result.isFound);
    EXPECT_NEAR(result.weldPos.x, 320.0, 1.5);
    EXPECT_NEAR(result.weldPos.y, 280.0, 1.0);
    EXPECT_NEAR(result.auxVal1, 0.5, 0.01);
    EXPECT_NEAR(result.auxVal3, -0.5, 0.01);
    EXPECT_NEAR(result.auxVal1 * result.weldPos.x + result.auxVal2, result.weldPos.y, 1e-3);
    EXPECT_NEAR(result.auxVal3 * result.weldPos.x + result.auxVal4, result.weldPos.y, 1e-2);
    EXPECT_NEAR(result.trackVal, 180.0 - 2.0 * std::atan(0.5) * 180.0 / CV_PI, 1.0);
    for (std::size_t i = 1; i < result.stripePts.size(); ++i) {
      EXPECT_LE(result.stripePts[i - 1].x, result.stripePts[i].x + 1.0F);
    }
  }
  EXPECT_FALSE(hasSubPixelRows(first));
}

TEST(DetectCornerSeam, angleThatChangedByMoreThanTenDegreesFallsBackToRidges) {
  const cv::Mat image = painted::cornerFrame();
  const TWeldLineRes first = detect(image);
  const double tracked = detect(image, {}, first).trackVal;
  for (const auto& [change, staysTracked] :
       {std::pair{9.99, true}, {10.01, false}, {-9.99, true}, {-10.01, false}}) {
    TWeldLineRes prevRes = first;
    prevRes.trackVal = tracked + change;
    const TWeldLineRes result = detect(image, {}, prevRes);
    ASSERT_TRUE(result.isFound) << change;  // the fallback does not look at the previous frame
    // Tracked points are smoothed: their columns are not whole.
    const float x = result.stripePts[result.stripePts.size() / 4].x;
    EXPECT_EQ(x != std::floor(x), staysTracked) << change;
  }
}

TEST(DetectCornerSeam, ridgesFindTheCornerThatEdgePairsMiss) {
  cv::Mat image = painted::dark();
  for (int x = 40; x < 600; ++x) {  // thinner than edge pairs allow
    const int y = 280 - std::abs(x - 320) / 2;
    image.at<uchar>(y, x) = 250;
    image.at<uchar>(y - 1, x) = image.at<uchar>(y + 1, x) = 120;
  }
  TWeldLineRes prevRes = detect(painted::cornerFrame());
  for (const bool isTracking : {false, true}) {
    prevRes.isFound = isTracking;
    const TWeldLineRes result = detect(image, {}, prevRes);
    ASSERT_TRUE(result.isFound) << isTracking;
    EXPECT_NEAR(result.weldPos.x, 320.0, 1.5);
    EXPECT_NEAR(result.weldPos.y, 280.0, 1.0);
  }
}

TEST(DetectCornerSeam, framesWithoutCornerAreNotFound) {
  cv::Mat hill = painted::dark();
  painted::paintPiece(hill, 40, 320, 300.0, -0.5);
  painted::paintPiece(hill, 320, 600, 160.0, 0.5);
  cv::Mat straight = painted::dark();
  painted::paintPiece(straight, 20, 620, 100.0, 0.3);
  for (const cv::Mat& image : {painted::dark(), hill, straight}) {
    const TWeldLineRes result = detect(image);
    EXPECT_FALSE(result.isFound);
    EXPECT_EQ(result.weldPos, cv::Point2f());
    EXPECT_EQ(result.trackVal, 0.0);
  }
  TWeldParams hillParams;
  hillParams.angleRange1Min = -45.0;
  hillParams.angleRange1Max = 0.0;
  hillParams.angleRange2Min = 0.0;
  hillParams.angleRange2Max = 45.0;
  EXPECT_TRUE(detect(hill, hillParams).isFound);
}

}  // namespace
