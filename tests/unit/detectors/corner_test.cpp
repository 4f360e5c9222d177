#include "detectors/corner.h"

#include "detectors/corner_flanks.h"
#include "geometry/segmentation.h"
#include "run_detector.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <utility>
#include <vector>

namespace {

using painted::bentPoints;
using painted::joined;
using TPoints = std::vector<cv::Point2f>;
using TFlanks = std::optional<weld::TFlankPair>;

TWeldLineRes detect(const cv::Mat& image, const TWeldParams& params = {}, const TWeldLineRes& prevRes = {}) {
  return run_detector::run(weld::detectCornerSeam, image, params, prevRes);
}

TPoints vPoints() {
  return bentPoints(40, 320, 600, 140.0, 0.5, -0.5);
}

TWeldParams with(double TWeldParams::*field, double value) {
  TWeldParams params;
  params.*field = value;
  return params;
}

void expectSlopes(const TFlanks& flanks, double leftK, double rightK) {
  ASSERT_TRUE(flanks);
  EXPECT_NEAR(flanks->left.k, leftK, 0.03);
  EXPECT_NEAR(flanks->right.k, rightK, 0.03);
}

TEST(FindFlankPairRansac, eachFlankLiesInItsRangeAndTheRightOneMayComeFirst) {
  const auto find = [](const TPoints& points, const TWeldParams& params = {}) {
    return weld::findFlankPairRansac(points, weld::cornerParams(params));
  };
  expectSlopes(find(vPoints()), 0.5, -0.5);
  EXPECT_FALSE(find(vPoints(), with(&TWeldParams::angleRange1Min, 40.0)));
  EXPECT_FALSE(find(vPoints(), with(&TWeldParams::angleRange2Max, -40.0)));
  EXPECT_FALSE(find({}));
  // 50 of 610 points are on the left flank: 8 % of all, but 100 % of what the right flank leaves over.
  const TPoints unlike =
      joined(painted::linePoints(20, 70, 100.0, 0.5), painted::linePoints(70, 630, 400.0, -0.5));
  expectSlopes(find(unlike, with(&TWeldParams::dPara3, 0.5)), 0.5, -0.5);
}

TEST(FindFlankPairByPolyline, takesTheLongestPieceOfEachRangeOrTheFirst) {
  const auto find = [](const TPoints& points, const TWeldParams& params = {}) {
    return weld::findFlankPairByPolyline(points, weld::cornerParams(params));
  };
  const TPoints zigzag =
      joined(bentPoints(20, 140, 200, 100.0, 0.4, -0.4), bentPoints(200, 400, 620, 124.0, 0.6, -0.5));
  expectSlopes(find(zigzag), 0.6, -0.5);
  EXPECT_FALSE(find(painted::linePoints(20, 400, 100.0, 0.4)));
  TWeldParams steepRight = with(&TWeldParams::angleRange2Min, -80.0);
  steepRight.angleRange2Max = -60.0;
  expectSlopes(find(vPoints(), steepRight), 0.5, 0.5);
}

TEST(FindFlankPairNear, prefersThePiecesNearThePreviousFlanks) {
  const auto find = [](const TPoints& points, double leftK, double rightK) {
    return weld::findFlankPairNear(points, leftK, rightK, weld::cornerParams({}));
  };
  // Two V side by side: a flat one, wider, and a steep one.
  const TPoints points =
      joined(bentPoints(10, 200, 390, 150.0, 0.2, -0.2), bentPoints(390, 500, 620, 150.0, 0.7, -0.7));
  for (const auto& [previousK, k] : {std::pair{0.2, 0.2}, {0.7, 0.7}, {0.65, 0.7}, {0.25, 0.2}}) {
    expectSlopes(find(points, previousK, -previousK), k, -k);
  }
  EXPECT_FALSE(find(painted::linePoints(10, 400, 150.0, 0.2), 0.2, -0.2));
  EXPECT_FALSE(find(bentPoints(10, 300, 600, 300.0, -0.3, 0.3), 0.3, -0.3)) << "the left flank must lie left";
}

TEST(FindFlankPairNear, ofEquallyLongPairsTheFirstIsTaken) {
  TPoints points = painted::linePoints(10, 100, 100.0);
  for (const int x : {100, 260}) {  // the same V twice, level pieces around them
    points = joined(points, bentPoints(x, x + 40, x + 80, 100.0, 0.5, -0.5));
    points = joined(points, painted::linePoints(x + 80, x + 160, 100.0));
  }
  const auto pieces = weld::segmentStripe(points, weld::TMergeLimits{});
  ASSERT_EQ(pieces.size(), 7U);
  for (const auto i : {1U, 2U}) ASSERT_EQ(weld::pieceLength(pieces[i]), weld::pieceLength(pieces[i + 3]));
  const TFlanks flanks = weld::findFlankPairNear(points, 0.5, -0.5, weld::cornerParams({}));
  ASSERT_TRUE(flanks);
  EXPECT_LT(flanks->left.inlierPts.back().x, 180.0F);
  EXPECT_LT(flanks->right.inlierPts.back().x, 190.0F);
}

TEST(TrimFlankOverlap, cutsWhatReachesBeyondTheFarEndOfTheOther) {
  const auto flank = [](int from, int to, double b, double k) {
    TLinePara line;
    line.k = k;
    line.b = b;
    line.isValid = true;
    line.inlierPts = painted::linePoints(from, to, k * from + b, k);
    return line;
  };
  // The left flank runs past the right one's last column 500, the right one begins before the left one's first.
  weld::TFlankPair flanks{flank(100, 560, 120.0, 0.5), flank(80, 501, 440.0, -0.5)};
  flanks.right.inlierPts.back().x = 500.75F;  // truncated, counts as column 500
  for (cv::Point2f& p : flanks.left.inlierPts) p.x += 0.5F;
  weld::TFlankPair whole = flanks;
  whole.left = flank(100, 560, 120.0, 0.5);
  weld::TFlankPair invalid = flanks;
  invalid.right.isValid = false;
  const struct {
    const char* name;
    weld::TFlankPair flanks;
    cv::Size size;
    float leftEnd, rightStart;
  } rows[] = {
      {"overlapping", flanks, {640, 480}, 499.5F, 100},
      {"points in the columns of the ends stay", whole, {640, 480}, 500, 100},
      {"intersection in column 320 of 320", flanks, {320, 480}, 559.5F, 80},
      {"intersection in row 280 of 280", flanks, {640, 280}, 559.5F, 80},
      {"right flank invalid", invalid, {640, 480}, 559.5F, 80},
      {"9 points on the left", {flank(551, 560, 120.0, 0.5), flanks.right}, {640, 480}, 559, 80},
  };
  for (const auto& row : rows) {
    weld::TFlankPair trimmed = row.flanks;
    weld::trimFlankOverlap(trimmed, row.size, weld::cornerParams({}));
    EXPECT_EQ(trimmed.left.inlierPts.back().x, row.leftEnd) << row.name;
    EXPECT_EQ(trimmed.right.inlierPts.front().x, row.rightStart) << row.name;
    EXPECT_EQ(trimmed.right.isValid, row.flanks.right.isValid) << row.name;
  }
}

TEST(IntersectionOf, parallelFlanksMeetFarOutside) {
  for (const auto& [rightK, x] : {std::pair{0.3, -5e6F}, {0.3 - 1e-9, 5e6F}}) {
    weld::TFlankPair flanks;
    flanks.left.k = 0.3;
    flanks.right.k = rightK;
    flanks.left.b = 10.0;
    flanks.right.b = 60.0;
    EXPECT_EQ(weld::intersectionOf(flanks).x, x);
  }
}

TEST(DetectCornerSeam, reportsCornerFlanksAndAngle) {
  const cv::Mat image = painted::cornerFrame();
  const TWeldLineRes first = detect(image);
  for (const TWeldLineRes& result : {first, detect(image, {}, first)}) {
    ASSERT_TRUE(result.isFound);
    EXPECT_NEAR(result.weldPos.x, 320.0, 1.5);
    EXPECT_NEAR(result.weldPos.y, 280.0, 1.0);
    EXPECT_NEAR(result.auxVal1, 0.5, 0.01);
    EXPECT_NEAR(result.auxVal3, -0.5, 0.01);
    EXPECT_NEAR(result.auxVal1 * result.weldPos.x + result.auxVal2, result.weldPos.y, 1e-3);
    EXPECT_NEAR(result.auxVal3 * result.weldPos.x + result.auxVal4, result.weldPos.y, 1e-2);
    EXPECT_NEAR(result.trackVal, 180.0 - 2.0 * std::atan(0.5) * 180.0 / CV_PI, 1.0);
  }
  for (const cv::Point2f& p : first.stripePts) EXPECT_EQ(p.y, std::floor(p.y)) << "edge pairs, no ridges";
}

TEST(DetectCornerSeam, angleThatChangedByMoreThanTenDegreesFallsBackToRidges) {
  const cv::Mat image = painted::cornerFrame();
  TWeldLineRes prevRes = detect(image);
  const double tracked = detect(image, {}, prevRes).trackVal;
  for (const auto& [change, isTracked] : {std::pair{9.99, true}, {10.01, false}, {-9.99, true}, {-10.01, false}}) {
    prevRes.trackVal = tracked + change;
    const TWeldLineRes result = detect(image, {}, prevRes);
    ASSERT_TRUE(result.isFound) << change;  // the fallback does not look at the previous frame
    // Tracked points are smoothed: their columns are not whole.
    const float x = result.stripePts[result.stripePts.size() / 4].x;
    EXPECT_EQ(x != std::floor(x), isTracked) << change;
  }
}

TEST(DetectCornerSeam, ridgesFindTheCornerThatEdgePairsMiss) {
  cv::Mat image = painted::dark();
  for (int x = 40; x < 600; ++x) {  // thinner than edge pairs allow
    const int y = 280 - std::abs(x - 320) / 2;
    image.at<uchar>(y, x) = 250;
    image.at<uchar>(y - 1, x) = image.at<uchar>(y + 1, x) = 120;
  }
  for (const TWeldLineRes& prevRes : {TWeldLineRes{}, detect(painted::cornerFrame())}) {
    const TWeldLineRes result = detect(image, {}, prevRes);
    ASSERT_TRUE(result.isFound) << prevRes.isFound;
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
}

}  // namespace
