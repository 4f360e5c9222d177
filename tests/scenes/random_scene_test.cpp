#include <gtest/gtest.h>

#include "measure.h"

namespace {

using scenes::TJoint;
using scenes::TLevel;

double degBetween(const scenes::TTruth& truth, int x0, int x1) {
  return std::atan2(truth.centreY[x1] - truth.centreY[x0], x1 - x0) * 180.0 / CV_PI;
}

TEST(RandomScene, SeamsLieWellInsideTheFrameAtEveryLevel) {
  for (const TJoint joint : measure::kAllJoints) {
    for (const TLevel level : {TLevel::clean, TLevel::noisy, TLevel::harsh}) {
      for (std::uint64_t seed = 0; seed < 8; ++seed) {
        const scenes::TTruth truth = renderScene(randomScene(joint, level, seed, {640, 480})).truth;
        EXPECT_EQ(truth.hasSeam, joint != TJoint::plain && joint != TJoint::blank);
        if (!truth.hasSeam) continue;
        const cv::Rect2d middle(0.28 * 640, 0.25 * 480, 0.44 * 640, 0.6 * 480);
        EXPECT_TRUE(middle.contains(truth.seam)) << truth.seam << " seed " << seed;
      }
    }
  }
}

TEST(RandomScene, CornersStayInsideTheirAngleRanges) {
  const TWeldParams weld = weldParamsFor(TJoint::corner);
  for (std::uint64_t seed = 0; seed < 40; ++seed) {
    const scenes::TTruth truth = renderScene(randomScene(TJoint::corner, TLevel::clean, seed)).truth;
    const int x = static_cast<int>(truth.seam.x);
    const double left = degBetween(truth, x - 200, x);
    const double right = degBetween(truth, x + 1, x + 201);
    EXPECT_TRUE(left > weld.angleRange1Min + 3.0 && left < weld.angleRange1Max - 3.0) << seed;
    EXPECT_TRUE(right > weld.angleRange2Min + 3.0 && right < weld.angleRange2Max - 3.0) << seed;
    EXPECT_LT(180.0 - left + right, weld.angleRange5Max - 3.0) << seed;
  }
}

TEST(Sequence, StillFramesKeepTheWorkpieceAndRenewTheNoise) {
  const scenes::TSceneParams first = randomScene(TJoint::plate, TLevel::noisy, 3, {640, 480});
  const scenes::TScene a = renderScene(frameOf(first, {}, 0));
  const scenes::TScene b = renderScene(frameOf(first, {}, 1));
  EXPECT_EQ(measure::checksum(a.image), measure::checksum(renderScene(first).image));
  EXPECT_NE(measure::checksum(a.image), measure::checksum(b.image));
  EXPECT_EQ(a.truth.seam, b.truth.seam);
}

TEST(Sequence, DriftJitterAndJumpMoveTheSeam) {
  scenes::TSceneParams first;
  first.joint = TJoint::corner;
  scenes::TMotion motion;
  motion.driftPx = {2.0, -1.0};
  motion.tiltDriftDeg = 0.1;
  motion.jumpAtFrame = 5;
  motion.jumpPx = {100.0, 40.0};
  const auto seamAt = [&](int n) { return renderScene(frameOf(first, motion, n)).truth.seam; };
  EXPECT_LT(cv::norm(seamAt(4) - cv::Point2d(648.0, 508.0)), 1e-9);
  EXPECT_LT(cv::norm(seamAt(5) - cv::Point2d(750.0, 547.0)), 1e-9);
  EXPECT_NEAR(frameOf(first, motion, 5).geometry.tiltDeg, 0.5, 1e-12);
  motion = {};
  motion.jitterPx = 3.0;
  EXPECT_NE(seamAt(1), seamAt(2));
  const cv::Rect2d reach(637.0, 509.0, 6.0, 6.0);
  for (int n = 0; n < 20; ++n) EXPECT_TRUE(reach.contains(seamAt(n))) << n;
}

TEST(Sequence, ProfileChangesAbruptly) {
  scenes::TSceneParams first;
  scenes::TMotion motion;
  motion.jumpAtFrame = 3;
  motion.changesProfile = true;
  const auto gapAt = [&](int n) {
    const scenes::TTruth truth = renderScene(frameOf(first, motion, n)).truth;
    return measure::firstLit(truth, 640) - measure::lastLit(truth, 640);
  };
  EXPECT_EQ(gapAt(2), 30);
  EXPECT_GT(gapAt(3), 36);
}

}  // namespace
