#include <gtest/gtest.h>

#include "measure.h"

namespace {

using scenes::TJoint;
using scenes::TLevel;

constexpr double kCentroidTolPx = 0.05;
const cv::Size kSizes[] = {{640, 480}, {1281, 1023}, {2592, 2048}};

cv::Point2d feature(const scenes::TTruth& truth, const std::string& name) {
  for (const scenes::TFeature& f : truth.features) {
    if (f.name == name) return f.point;
  }
  ADD_FAILURE() << "no feature " << name;
  return {};
}

TEST(SceneTruth, CleanScenesHaveTheirCentroidAtTheTrueRowAndAreDarkElsewhere) {
  for (const TJoint joint : measure::kAllJoints) {
    for (const cv::Size size : kSizes) {
      const scenes::TScene scene = renderScene(randomScene(joint, TLevel::clean, 7, size));
      ASSERT_EQ(scene.image.type(), CV_8UC1);
      ASSERT_EQ(scene.image.size(), size);
      double worst = 0.0;
      int lit = 0;
      for (int x = 0; x < size.width; ++x) {
        const double row = scene.truth.centreY[x];
        if (std::isnan(row)) {
          EXPECT_EQ(measure::brightest(scene.image, x), 0) << x;
          EXPECT_EQ(scene.truth.fwhmPx[x], 0.0) << x;
          continue;
        }
        ++lit;
        const double reach = 10.0 * scene.truth.fwhmPx[x];
        if (row < reach || row > size.height - reach) continue;
        worst = std::max(worst, std::abs(measure::centroid(scene.image, x) - row));
      }
      EXPECT_LT(worst, kCentroidTolPx) << "joint " << static_cast<int>(joint) << " " << size;
      EXPECT_EQ(lit > size.width / 2, joint != TJoint::blank) << static_cast<int>(joint);
    }
  }
}

TEST(SceneTruth, GapSeamIsMidwayBetweenTheLitColumnsOnTheRowOfTheLeftEdge) {
  scenes::TSceneParams params;
  params.geometry.gapPx = 31.0;
  params.geometry.tiltDeg = 10.0;
  const scenes::TTruth truth = renderScene(params).truth;
  const int left = measure::lastLit(truth, 640);
  const int right = measure::firstLit(truth, 640);
  EXPECT_EQ(right - left, 32);
  EXPECT_EQ(feature(truth, "gapLeft").x, left);
  EXPECT_EQ(feature(truth, "gapRight").x, right);
  const double row = truth.centreY[left];
  EXPECT_EQ(seamPoint(TJoint::buttGap, truth, TWeldPosType::centre), cv::Point2d((left + right) / 2.0, row));
  EXPECT_EQ(seamPoint(TJoint::buttGap, truth, TWeldPosType::left), cv::Point2d(left, row));
  EXPECT_EQ(seamPoint(TJoint::buttGap, truth, TWeldPosType::right), cv::Point2d(right, row));
}

TEST(SceneTruth, LapSeamLiesBetweenTheFacingEndsInBothDirections) {
  for (const double step : {60.0, -60.0}) {
    scenes::TSceneParams params;
    params.joint = TJoint::lap;
    params.geometry.stepPx = step;
    const scenes::TTruth truth = renderScene(params).truth;
    const cv::Point2d left{640.0, truth.centreY[640]};
    const cv::Point2d right{641.0, truth.centreY[641]};
    EXPECT_NEAR(right.y - left.y, step, 1e-9);
    EXPECT_EQ(seamPoint(TJoint::lap, truth, TWeldPosType::centre), (left + right) * 0.5);
    EXPECT_EQ(seamPoint(TJoint::lap, truth, TWeldPosType::upper), step > 0.0 ? left : right);
    EXPECT_EQ(seamPoint(TJoint::lap, truth, TWeldPosType::lower), step > 0.0 ? right : left);
  }
}

TEST(SceneTruth, OverlappingLapShowsBothPiecesAndKeepsTheLeftOneAsTruth) {
  scenes::TSceneParams params;
  params.joint = TJoint::lap;
  params.geometry.overlapPx = 20.0;
  const scenes::TScene scene = renderScene(params);
  EXPECT_NEAR(scene.truth.centreY[640], 512.0 - 30.0, 1e-9);
  EXPECT_NEAR(measure::centroid(scene.image, 640), 512.0, kCentroidTolPx);
}

TEST(SceneTruth, PlateSeamIsTheMiddleOfTheHighestPiece) {
  scenes::TSceneParams params;
  params.joint = TJoint::plate;
  params.geometry.tiltDeg = 4.0;
  const scenes::TTruth truth = renderScene(params).truth;
  const cv::Point2d left = feature(truth, "plateLeft");
  const cv::Point2d right = feature(truth, "plateRight");
  EXPECT_EQ(right.x - left.x, params.geometry.plateWidthPx);
  EXPECT_NEAR(truth.centreY[static_cast<int>(left.x)], left.y, 1e-9);
  EXPECT_GT(truth.centreY[static_cast<int>(left.x) - 1], left.y + 50.0);
  EXPECT_GT(truth.centreY[static_cast<int>(right.x) + 1], right.y + 50.0);
  EXPECT_EQ(truth.seam, (left + right) * 0.5);
  EXPECT_EQ(seamPoint(TJoint::plate, truth, TWeldPosType::left), cv::Point2d(left.x, truth.seam.y));
  EXPECT_EQ(seamPoint(TJoint::plate, truth, TWeldPosType::right), cv::Point2d(right.x, truth.seam.y));
}

TEST(SceneTruth, CornerAndVGrooveSeamsAreTheIntersectionOfTheirFlanks) {
  for (const TJoint joint : {TJoint::corner, TJoint::vGroove}) {
    scenes::TSceneParams params;
    params.joint = joint;
    params.geometry.gapPx = 0.0;
    params.geometry.seam = {0.4321, 0.55};
    params.geometry.tiltDeg = 3.0;
    const scenes::TTruth truth = renderScene(params).truth;
    const int x = static_cast<int>(truth.seam.x);
    const double leftSlope = (truth.centreY[x] - truth.centreY[x - 100]) / 100.0;
    const double rightSlope = (truth.centreY[x + 101] - truth.centreY[x + 1]) / 100.0;
    const double crossX = x + (truth.centreY[x + 1] - rightSlope - truth.centreY[x]) / (leftSlope - rightSlope);
    EXPECT_GT(leftSlope, 0.0);
    EXPECT_LT(rightSlope, 0.0);
    EXPECT_NEAR(crossX, truth.seam.x, 1e-6);
    EXPECT_NEAR(truth.centreY[x] + leftSlope * (crossX - x), truth.seam.y, 1e-6);
  }
}

TEST(SceneTruth, GroovesNameTheirShouldersAndTheirRootBelowThem) {
  for (const TJoint joint :
       {TJoint::vGroove, TJoint::singleBevel, TJoint::uGroove, TJoint::flareV, TJoint::flareBevel}) {
    scenes::TSceneParams params;
    params.joint = joint;
    const scenes::TTruth truth = renderScene(params).truth;
    EXPECT_EQ(feature(truth, "root"), truth.seam);
    const cv::Point2d left = feature(truth, "leftShoulder");
    EXPECT_LT(left.x, truth.seam.x);
    EXPECT_NEAR(truth.seam.y - left.y, params.geometry.depthPx, 1e-9);
    EXPECT_NEAR(truth.centreY[static_cast<int>(left.x)], left.y, 1e-9);
    if (joint == TJoint::flareBevel) continue;  // its other side has no shoulder
    const cv::Point2d right = feature(truth, "rightShoulder");
    EXPECT_GT(right.x, truth.seam.x);
    EXPECT_NEAR(truth.centreY[static_cast<int>(right.x) + 1], right.y, 1e-9);
  }
}

TEST(SceneTruth, SeamOutsideTheFrameIsNotClaimed) {
  scenes::TSceneParams params;
  params.geometry.seam = {1.2, 0.5};
  EXPECT_FALSE(renderScene(params).truth.hasSeam);
  params.geometry.seam = {0.5, 0.5};
  EXPECT_TRUE(renderScene(params).truth.hasSeam);
  params.joint = TJoint::plain;
  EXPECT_FALSE(renderScene(params).truth.hasSeam);
}

}  // namespace
