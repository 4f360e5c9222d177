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

TEST(SceneLook, StripeHasItsWidthAcrossItsDirection) {
  for (const double flatTop : {0.0, 1.0}) {
    for (const double fwhm : {2.0, 7.0, 20.0, 50.0}) {
      for (const double tilt : {0.0, 40.0}) {
        scenes::TSceneParams params = plainScene();
        params.geometry.tiltDeg = tilt;
        params.look.fwhmPx = fwhm;
        params.look.flatTop = flatTop;
        const scenes::TScene scene = renderScene(params);
        const double expected = fwhm / std::cos(tilt * CV_PI / 180.0);
        EXPECT_NEAR(measure::heightAtHalf(scene.image, 320), expected, 0.35) << fwhm << " at " << tilt;
        EXPECT_EQ(scene.truth.fwhmPx[320], fwhm);
      }
    }
  }
}

TEST(SceneLook, RootOfAGrooveIsThinnerAndDimmerThanThePlate) {
  scenes::TSceneParams params;
  params.joint = TJoint::vGroove;
  params.geometry.gapPx = 4.0;
  params.look.fwhmPx = 30.0;
  params.look.rootFwhmPx = 4.0;
  params.look.rootPeak = 60.0;
  const scenes::TScene scene = renderScene(params);
  EXPECT_EQ(scene.truth.fwhmPx[50], 30.0);
  EXPECT_NEAR(scene.truth.fwhmPx[637], 4.0, 0.5);
  EXPECT_EQ(measure::brightest(scene.image, 50), 200);
  EXPECT_NEAR(measure::brightest(scene.image, 637), 60, 3);
}

TEST(SceneLook, SurfacesDifferByTheirRatioAndFadeTowardsTheSides) {
  scenes::TSceneParams params;
  params.look.brightnessRatio = 10.0;
  const scenes::TScene unlike = renderScene(params);
  EXPECT_EQ(measure::brightest(unlike.image, 300), 200);
  EXPECT_EQ(measure::brightest(unlike.image, 900), 20);
  params.look.brightnessRatio = 1.0;
  params.look.fade = 0.5;
  const scenes::TScene fading = renderScene(params);
  EXPECT_NEAR(measure::brightest(fading.image, 600), 200, 1);
  EXPECT_NEAR(measure::brightest(fading.image, 0), 100, 1);
  EXPECT_NEAR(measure::brightest(fading.image, 1279), 100, 1);
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

TEST(SceneLook, NoiseAndBackgroundHaveTheirMeanAndSpread) {
  scenes::TSceneParams params = plainScene();
  params.joint = TJoint::blank;
  params.look.background = 60.0;
  params.look.noiseSigma = 8.0;
  const measure::TSpread noise = measure::spreadOf(renderScene(params).image);
  EXPECT_NEAR(noise.mean, 60.0, 0.2);
  EXPECT_NEAR(noise.sigma, 8.0, 0.2);
  params.look.noiseSigma = 0.0;
  params.look.texture = 20.0;
  const measure::TSpread texture = measure::spreadOf(renderScene(params).image);
  EXPECT_NEAR(texture.mean, 60.0, 3.0);
  EXPECT_GT(texture.sigma, 3.0);
  EXPECT_LT(texture.sigma, 20.0);
}

TEST(SceneLook, SpeckleHasItsContrastAndItsGrain) {
  double previous = 1.0;
  for (const double grain : {1.0, 2.0, 4.0}) {
    scenes::TSceneParams params = plainScene();
    params.look.fwhmPx = 50.0;
    params.look.flatTop = 1.0;
    params.look.peak = 50.0;
    params.look.speckle = 0.5;
    params.look.speckleGrainPx = grain;
    const cv::Mat ridge = renderScene(params).image.rowRange(230, 250);
    const measure::TSpread spread = measure::spreadOf(ridge);
    EXPECT_NEAR(spread.mean, 50.0, 3.0);
    EXPECT_NEAR(spread.sigma / spread.mean, 0.5, 0.06) << grain;
    cv::Mat change;
    cv::absdiff(ridge.colRange(1, 640), ridge.colRange(0, 639), change);
    const double roughness = measure::spreadOf(change).mean / spread.mean;
    EXPECT_LT(roughness, 0.9 * previous) << grain;
    previous = roughness;
  }
}

TEST(SceneLook, LostStretchesHaveTheirShareAndLengthAndSpareTheSeam) {
  scenes::TSceneParams params;
  params.look.missingShare = 0.2;
  params.look.missingRunPx = 40.0;
  params.look.background = 20.0;
  const scenes::TScene scene = renderScene(params);
  int lost = 0;
  int run = 0;
  for (int x = 0; x < params.size.width; ++x) {
    const bool isLost = std::isnan(scene.truth.centreY[x]) && (x < 625 || x > 655);
    run = isLost ? run + 1 : 0;
    lost += isLost ? 1 : 0;
    EXPECT_LE(run, 40);
    if (!isLost) continue;
    EXPECT_TRUE(x < 625 - 29 || x > 655 + 29) << x;
    EXPECT_EQ(measure::brightest(scene.image, x), 20) << x;
  }
  EXPECT_NEAR(lost, 256, 40);
}

TEST(SceneLook, GhostIsParallelCrossingOrPartial) {
  scenes::TSceneParams params = plainScene();
  params.look.ghostShare = 0.5;
  params.look.ghostOffsetPx = 60.0;
  scenes::TScene scene = renderScene(params);
  EXPECT_NEAR(levelAt(scene, 20, 60.0), 100, 2);
  EXPECT_NEAR(levelAt(scene, 600, 60.0), 100, 2);
  params.look.ghostSpan = 0.5;
  scene = renderScene(params);
  EXPECT_EQ(levelAt(scene, 20, 60.0), 0);
  EXPECT_NEAR(levelAt(scene, 320, 60.0), 100, 2);
  params.look.ghostSpan = 1.0;
  params.look.ghostTiltDeg = 45.0;
  scene = renderScene(params);
  EXPECT_NEAR(levelAt(scene, 420, 160.0), 100, 2);
  EXPECT_EQ(levelAt(scene, 260, 0.0), 255) << "where it crosses, the light adds up";
}

TEST(SceneLook, SecondExposureRepeatsTheStripeDimmer) {
  scenes::TSceneParams params = plainScene();
  params.look.doubleExposurePx = 40.0;
  const scenes::TScene scene = renderScene(params);
  EXPECT_NEAR(levelAt(scene, 100, 0.0), 200, 2);
  EXPECT_NEAR(levelAt(scene, 100, 40.0), 120, 2);
}

TEST(SceneLook, FlareFattensTheStripeNearTheSeamOnly) {
  scenes::TSceneParams params;
  params.look.flare = 1.0;
  const scenes::TScene scene = renderScene(params);
  EXPECT_GT(scene.truth.fwhmPx[620], 14.0);
  EXPECT_NEAR(scene.truth.fwhmPx[100], 7.0, 0.01);
  EXPECT_GT(measure::heightAtHalf(scene.image, 620), 1.8 * measure::heightAtHalf(scene.image, 100));
  EXPECT_NEAR(measure::centroid(scene.image, 620), scene.truth.centreY[620], 0.05);
}

TEST(SceneLook, SpatterGlowAndBlobsLightThePlateBesideTheStripe) {
  const scenes::TSceneParams bare = plainScene();
  const auto litPixels = [](const scenes::TSceneParams& params) {
    return cv::countNonZero(renderScene(params).image > 50);
  };
  const int stripe = litPixels(bare);
  scenes::TSceneParams params = bare;
  params.look.spatter = 10;
  EXPECT_GT(litPixels(params), stripe + 300);
  params = bare;
  params.look.blobs = 5;
  EXPECT_GT(litPixels(params), stripe + 300);
  params = bare;
  params.look.arcGlow = 120.0;
  EXPECT_GT(litPixels(params), stripe + 3000);
  EXPECT_GT(renderScene(params).image.at<std::uint8_t>(182, 320), 90) << "the arc burns above the seam";
}

}  // namespace
