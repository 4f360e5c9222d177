#include <gtest/gtest.h>

#include "measure.h"

namespace {

using scenes::TJoint;
using scenes::TLevel;

constexpr double kCentroidTolPx = 0.05;

using measure::feature;

// The three seam points of a joint, in the order of the welding positions.
void expectSeams(TJoint joint, const scenes::TTruth& truth, const std::vector<TWeldPosType>& positions,
                 const std::vector<cv::Point2d>& seams) {
  for (std::size_t i = 0; i < positions.size(); ++i)
    EXPECT_EQ(seamPoint(joint, truth, positions[i]), seams[i]) << i;
}

TEST(SceneTruth, CleanScenesHaveTheirCentroidAtTheTrueRowAndAreDarkElsewhere) {
  for (const TJoint joint : measure::kAllJoints) {
    for (const cv::Size size : {cv::Size(640, 480), cv::Size(1281, 1023), cv::Size(2592, 2048)}) {
      const scenes::TSceneParams params = randomScene(joint, TLevel::clean, 7, size);
      const scenes::TScene scene = renderScene(params);
      ASSERT_EQ(scene.image.type(), CV_8UC1);
      ASSERT_EQ(scene.image.size(), size);
      int lit = 0;
      for (int x = 0; x < size.width; ++x) {
        const double row = scene.truth.centreY[x];
        const double reach = 10.0 * scene.truth.fwhmPx[x];
        lit += std::isnan(row) ? 0 : 1;
        if (std::isnan(row)) {
          EXPECT_EQ(cv::countNonZero(scene.image.col(x)), 0) << x;
          EXPECT_EQ(reach, 0.0) << x;
        } else if (row > reach && row < size.height - reach) {
          EXPECT_NEAR(measure::centroid(scene.image, x), row, kCentroidTolPx)
              << static_cast<int>(joint) << " " << x;
        }
      }
      const auto& groove = params.geometry.groove;
      const int least = groove && groove->isTube ? size.width / 3 : size.width / 2;  // tubes fall away
      EXPECT_EQ(lit > least, joint != TJoint::blank) << static_cast<int>(joint);
    }
  }
}

TEST(SceneTruth, RandomSeamsLieWellInsideTheFrameAndTheAngleRanges) {
  const TWeldParams weld = weldParamsFor(TJoint::corner);
  for (const TJoint joint : measure::kAllJoints) {
    for (const TLevel level : {TLevel::clean, TLevel::noisy, TLevel::harsh, TLevel::real}) {
      for (std::uint64_t seed = 0; seed < 8; ++seed) {
        const scenes::TTruth truth = renderScene(randomScene(joint, level, seed, {640, 480})).truth;
        EXPECT_EQ(truth.hasSeam, joint != TJoint::plain && joint != TJoint::blank);
        const cv::Rect2d middle(0.28 * 640, 0.25 * 480, 0.44 * 640, 0.6 * 480);
        EXPECT_TRUE(!truth.hasSeam || middle.contains(truth.seam)) << truth.seam << " seed " << seed;
        if (joint != TJoint::corner || level != TLevel::clean) continue;
        const int x = static_cast<int>(truth.seam.x);
        const double left = std::atan((truth.centreY[x] - truth.centreY[x - 100]) / 100.0) * 180.0 / CV_PI;
        const double right = std::atan((truth.centreY[x + 101] - truth.centreY[x + 1]) / 100.0) * 180.0 / CV_PI;
        EXPECT_TRUE(left > weld.angleRange1Min + 3.0 && left < weld.angleRange1Max - 3.0) << seed;
        EXPECT_TRUE(right > weld.angleRange2Min + 3.0 && right < weld.angleRange2Max - 3.0) << seed;
        EXPECT_LT(180.0 - left + right, weld.angleRange5Max - 3.0) << seed;
      }
    }
  }
}

TEST(SceneTruth, GapSeamIsMidwayBetweenTheLitColumnsOnTheRowOfTheLeftEdge) {
  scenes::TSceneParams params;
  params.geometry.gapPx = 31.0;
  params.geometry.tiltDeg = 10.0;
  const scenes::TTruth truth = renderScene(params).truth;
  const int left = measure::firstLit(truth, 640, -1);
  const int right = measure::firstLit(truth, 640, 1);
  EXPECT_EQ(right - left, 32);
  EXPECT_EQ(feature(truth, "gapLeft").x, left);
  EXPECT_EQ(feature(truth, "gapRight").x, right);
  const double row = truth.centreY[left];
  expectSeams(TJoint::buttGap, truth, {TWeldPosType::centre, TWeldPosType::left, TWeldPosType::right},
              {{(left + right) / 2.0, row}, cv::Point2d(left, row), cv::Point2d(right, row)});
  for (const auto& [share, hasSeam] : {std::pair{1.2, false}, {0.5, true}}) {
    params.geometry.seam = {share, 0.5};
    EXPECT_EQ(renderScene(params).truth.hasSeam, hasSeam) << "outside the frame";
  }
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
    expectSeams(TJoint::lap, truth, {TWeldPosType::centre, TWeldPosType::upper, TWeldPosType::lower},
                {(left + right) * 0.5, step > 0.0 ? left : right, step > 0.0 ? right : left});
    params.geometry.overlapPx = 20.0;  // both pieces are seen, the left one is the truth
    const scenes::TScene scene = renderScene(params);
    EXPECT_NEAR(scene.truth.centreY[640], 512.0 - step / 2.0, 1e-9);
    EXPECT_NEAR(measure::centroid(scene.image, 640), 512.0, kCentroidTolPx);
  }
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
  expectSeams(TJoint::plate, truth, {TWeldPosType::centre, TWeldPosType::left, TWeldPosType::right},
              {(left + right) * 0.5, {left.x, truth.seam.y}, {right.x, truth.seam.y}});
}

TEST(SceneTruth, CornerSeamIsTheIntersectionOfItsFlanks) {
  scenes::TSceneParams params;
  params.joint = TJoint::corner;
  params.geometry.seam = {0.4321, 0.55};
  params.geometry.tiltDeg = 3.0;
  const scenes::TTruth truth = renderScene(params).truth;
  const int x = static_cast<int>(truth.seam.x);
  const double leftSlope = (truth.centreY[x] - truth.centreY[x - 100]) / 100.0;
  const double rightSlope = (truth.centreY[x + 101] - truth.centreY[x + 1]) / 100.0;
  const double crossX = x + (truth.centreY[x + 1] - rightSlope - truth.centreY[x]) / (leftSlope - rightSlope);
  EXPECT_NEAR(crossX, truth.seam.x, 1e-6);
  EXPECT_NEAR(truth.centreY[x] + leftSlope * (crossX - x), truth.seam.y, 1e-6);
}

}  // namespace
