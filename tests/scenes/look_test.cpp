#include <gtest/gtest.h>

#include "measure.h"

namespace {

using scenes::TJoint;

// Changes only when the look of scenes is changed on purpose.
constexpr std::uint64_t kGoldenChecksum = 3341022134847900786ULL;

scenes::TSceneParams plainScene() {
  scenes::TSceneParams params;
  params.joint = TJoint::plain;
  params.size = {640, 480};
  return params;
}

int levelAt(const scenes::TScene& scene, int x, double below) {
  return scene.image.at<std::uint8_t>(cvRound(scene.truth.centreY[x] + below), x);
}

TEST(SceneLook, SameParametersGiveTheSameBytesAndTheSeedCounts) {
  scenes::TSceneParams params = randomScene(TJoint::vGroove, scenes::TLevel::harsh, 11, {320, 240});
  const std::uint64_t first = measure::checksum(renderScene(params).image);
  EXPECT_EQ(measure::checksum(renderScene(params).image), first);
  params.seed += 1;
  EXPECT_NE(measure::checksum(renderScene(params).image), first);
}

TEST(SceneLook, BytesAreTheSameOnEveryMachine) {
  scenes::TSceneParams params;
  params.joint = TJoint::uGroove;
  params.size = {200, 160};
  params.geometry = {{0.45, 0.6}, 7.0, 20.0, 60.0, 0.0, 25.0, -25.0, 50.0, 500.0};
  scenes::TLook& look = params.look;
  look.brightnessRatio = 3.0;
  look.peak = 700.0;
  look.fade = 0.3;
  look.speckle = 0.4;
  look.noiseSigma = 8.0;
  look.background = 30.0;
  look.texture = 12.0;
  look.flatTop = 0.5;
  look.missingShare = 0.05;
  look.missingRunPx = 6.0;
  look.flare = 0.5;
  look.blobs = 2;
  look.spatter = 4;
  look.arcGlow = 60.0;
  look.ghostShare = 0.4;
  look.ghostTiltDeg = 5.0;
  look.doubleExposurePx = 9.0;
  EXPECT_EQ(measure::checksum(renderScene(params).image), kGoldenChecksum);
}

TEST(SceneLook, SaturationClipsAndDarknessDoesNotWrap) {
  scenes::TSceneParams params = plainScene();
  params.look.peak = 3000.0;
  params.look.noiseSigma = 8.0;
  const scenes::TScene scene = renderScene(params);
  for (int x = 0; x < params.size.width; ++x) EXPECT_EQ(levelAt(scene, x, 0.0), 255);
  double darkest = 0.0;
  double brightest = 0.0;
  cv::minMaxLoc(scene.image.rowRange(0, 180), &darkest, &brightest);
  EXPECT_EQ(darkest, 0.0);
  EXPECT_LT(brightest, 60.0);
}

TEST(SceneLook, StripeHasItsWidthAcrossItsDirection) {
  for (const double flatTop : {0.0, 1.0}) {
    for (const double fwhm : {2.0, 20.0, 50.0}) {
      for (const double tilt : {0.0, 40.0}) {
        scenes::TSceneParams params = plainScene();
        params.geometry.tiltDeg = tilt;
        params.look.fwhmPx = fwhm;
        params.look.flatTop = flatTop;
        const double expected = fwhm / std::cos(tilt * CV_PI / 180.0);
        EXPECT_NEAR(measure::heightAtHalf(renderScene(params).image, 320), expected, 0.35) << fwhm << " " << tilt;
      }
    }
  }
}

TEST(SceneLook, NoiseAndSpeckleHaveTheirSpread) {
  scenes::TSceneParams params = plainScene();
  params.joint = TJoint::blank;
  params.look.background = 60.0;
  params.look.noiseSigma = 8.0;
  const measure::TSpread noise = measure::spreadOf(renderScene(params).image);
  EXPECT_NEAR(noise.mean, 60.0, 0.2);
  EXPECT_NEAR(noise.sigma, 8.0, 0.2);
  params = plainScene();
  params.look.fwhmPx = 50.0;
  params.look.flatTop = 1.0;
  params.look.peak = 50.0;
  params.look.speckle = 0.5;
  const measure::TSpread ridge = measure::spreadOf(renderScene(params).image.rowRange(230, 250));
  EXPECT_NEAR(ridge.mean, 50.0, 3.0);
  EXPECT_NEAR(ridge.sigma / ridge.mean, 0.5, 0.06);
}

TEST(SceneLook, LostStretchesHaveTheirShareAndSpareTheSeam) {
  scenes::TSceneParams params;
  params.look.missingShare = 0.2;
  params.look.missingRunPx = 40.0;
  const scenes::TScene scene = renderScene(params);
  int lost = 0;
  for (int x = 0; x < params.size.width; ++x) {
    if (!std::isnan(scene.truth.centreY[x]) || (x >= 625 && x <= 655)) continue;  // the gap itself
    ++lost;
    EXPECT_TRUE(x < 625 - 29 || x > 655 + 29) << x;
    EXPECT_EQ(measure::brightest(scene.image, x), 0) << x;
  }
  EXPECT_NEAR(lost, 256, 40);
}

TEST(SceneLook, GhostIsParallelOrCrossing) {
  scenes::TSceneParams params = plainScene();
  params.look.ghostShare = 0.5;
  params.look.ghostOffsetPx = 60.0;
  for (const int x : {20, 600}) EXPECT_NEAR(levelAt(renderScene(params), x, 60.0), 100, 2);
  params.look.ghostTiltDeg = 45.0;
  EXPECT_NEAR(levelAt(renderScene(params), 420, 160.0), 100, 2);
  EXPECT_EQ(levelAt(renderScene(params), 260, 0.0), 255) << "where it crosses, the light adds up";
}

}  // namespace
