#include <gtest/gtest.h>

#include "measure.h"

#include <algorithm>
#include <vector>

namespace {

using scenes::TJoint;
using scenes::TLevel;

TEST(SceneLook, BytesAreTheSameOnEveryMachineAndChangeWithTheSeed) {
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
  // Changes only when the look of scenes is changed on purpose.
  constexpr std::uint64_t kPinned = 3341022134847900786ULL;
  EXPECT_EQ(measure::checksum(renderScene(params).image), kPinned);
  EXPECT_EQ(measure::checksum(renderScene(params).image), kPinned);
  params.seed += 1;
  EXPECT_NE(measure::checksum(renderScene(params).image), kPinned);
}

TEST(SceneLook, StripeHasItsWidthAcrossItsDirection) {
  for (const double flatTop : {0.0, 1.0}) {
    for (const double fwhm : {2.0, 20.0, 50.0}) {
      for (const double tilt : {0.0, 40.0}) {
        scenes::TSceneParams params;
        params.joint = TJoint::plain;
        params.size = {640, 480};
        params.geometry.tiltDeg = tilt;
        params.look.fwhmPx = fwhm;
        params.look.flatTop = flatTop;
        const double expected = fwhm / std::cos(tilt * CV_PI / 180.0);
        EXPECT_NEAR(measure::heightAtHalf(renderScene(params).image, 320), expected, 0.35) << fwhm << " " << tilt;
      }
    }
  }
}

TEST(Sequence, FramesRenewTheNoiseAndMoveTheSeam) {
  const scenes::TSceneParams still = randomScene(TJoint::plate, TLevel::noisy, 3, {640, 480});
  const scenes::TScene a = renderScene(frameOf(still, {}, 0));
  const scenes::TScene b = renderScene(frameOf(still, {}, 1));
  EXPECT_EQ(measure::checksum(a.image), measure::checksum(renderScene(still).image));
  EXPECT_NE(measure::checksum(a.image), measure::checksum(b.image));
  EXPECT_EQ(a.truth.seam, b.truth.seam);

  scenes::TSceneParams first;
  scenes::TMotion motion;
  motion.driftPx = {2.0, -1.0};
  motion.tiltDriftDeg = 0.1;
  motion.jumpAtFrame = 5;
  motion.jumpPx = {100.0, 40.0};
  const auto truthAt = [&](int n) { return renderScene(frameOf(first, motion, n)).truth; };
  first.joint = TJoint::corner;
  EXPECT_LT(cv::norm(truthAt(4).seam - cv::Point2d(648.0, 508.0)), 1e-9);
  EXPECT_LT(cv::norm(truthAt(5).seam - cv::Point2d(750.0, 547.0)), 1e-9);
  EXPECT_NEAR(frameOf(first, motion, 5).geometry.tiltDeg, 0.5, 1e-12);
  motion = {};
  motion.jitterPx = 3.0;
  EXPECT_NE(truthAt(1).seam, truthAt(2).seam);
  for (int n = 0; n < 20; ++n) EXPECT_TRUE(cv::Rect2d(637.0, 509.0, 6.0, 6.0).contains(truthAt(n).seam)) << n;
  motion = {};
  motion.jumpAtFrame = 3;
  motion.changesProfile = true;
  first.joint = TJoint::buttGap;
  const auto gapAt = [&](int n) {
    return measure::firstLit(truthAt(n), 640, 1) - measure::firstLit(truthAt(n), 640, -1);
  };
  EXPECT_EQ(gapAt(2), 30);
  EXPECT_GT(gapAt(3), 36);
  motion = {};
  motion.flashAtFrame = 2;
  motion.flashFrames = 2;
  const auto litAt = [&](int n) {
    const std::vector<double> rows = truthAt(n).centreY;
    return std::count_if(rows.begin(), rows.end(), [](double row) { return !std::isnan(row); });
  };
  EXPECT_GT(litAt(1), 1200);
  for (const int n : {2, 3}) EXPECT_TRUE(litAt(n) > 0 && litAt(n) <= 27) << n;
  EXPECT_EQ(litAt(4), litAt(1));
}

// Change only when harsh grooves or real frames are changed on purpose.
constexpr std::uint64_t kGoldenImages = 6062374180522708438ULL;
constexpr std::uint64_t kGoldenTruths = 17093593137188515713ULL;

// Points and measures to a thousandth of a pixel or degree.
std::uint64_t checksumOf(const scenes::TTruth& truth) {
  const scenes::TMeasures& m = truth.measures;
  std::vector<double> values{truth.seam.x,       truth.seam.y,   m.gapPx,        m.widthPx,
                             m.depthPx,          m.mismatchPx,   m.leftAngleDeg, m.rightAngleDeg,
                             m.includedAngleDeg, m.baseAngleDeg, m.leftRadiusPx, m.rightRadiusPx};
  for (const scenes::TFeature& f : truth.features) values.insert(values.end(), {f.point.x, f.point.y});
  std::uint64_t sum = 0;
  for (const double v : values)
    sum = sum * 31 + static_cast<std::uint64_t>(std::isnan(v) ? -1 : std::llround(v * 1e3));
  return sum;
}

TEST(RealScenes, BytesAndTruthsAreTheSameOnEveryMachine) {
  std::uint64_t sum = 0;
  std::uint64_t truths = 0;
  for (const TJoint joint : measure::kAllJoints) {
    for (std::uint64_t seed = 0; seed < 8; ++seed) {
      const TLevel level = seed == 0 && joint >= TJoint::vGroove ? TLevel::harsh : TLevel::real;
      const scenes::TScene scene = renderScene(randomScene(joint, level, seed, {320, 240}));
      sum = sum * 31 + measure::checksum(scene.image);
      truths = truths * 31 + checksumOf(scene.truth);
    }
  }
  EXPECT_EQ(sum, kGoldenImages);
  EXPECT_EQ(truths, kGoldenTruths);
}

TEST(RealScenes, HalfOfTheGapsAreTightBreaksWithASideStep) {
  int tight = 0;
  for (std::uint64_t seed = 0; seed < 40; ++seed) {
    const scenes::TTruth truth = renderScene(randomScene(TJoint::buttGap, TLevel::real, seed)).truth;
    const cv::Point2d left = truth.features[0].point;
    const cv::Point2d right = truth.features[1].point;
    if (right.x - left.x > 10.0) continue;
    ++tight;
    const auto at = static_cast<std::size_t>(left.x);
    const auto dark = static_cast<std::size_t>(right.x - left.x) - 1;
    EXPECT_TRUE(dark >= 1 && dark <= 3) << seed;
    for (std::size_t i = 1; i <= dark; ++i) EXPECT_TRUE(std::isnan(truth.centreY[at + i])) << seed;
    const double slope = truth.centreY[at] - truth.centreY[at - 1];
    const double step = truth.centreY[at + dark + 1] - truth.centreY[at] - slope * static_cast<double>(dark + 1);
    EXPECT_TRUE(std::abs(step) > 0.49 && std::abs(step) < 1.51) << seed << ": " << step;
  }
  EXPECT_NEAR(tight, 20, 8);
}

TEST(RealScenes, ThinStripesHaveEdgePairsInTwoThirdsOfTheirColumns) {
  double share = 0.0;
  int count = 0;
  for (std::uint64_t seed = 0; count < 12; ++seed) {
    scenes::TSceneParams params = randomScene(TJoint::plain, TLevel::real, seed);
    if (params.look.fwhmPx > 6.0) continue;
    params.troubles = {};
    const scenes::TScene scene = renderScene(params);
    TWeldParams weld = scenes::weldParamsFor(TJoint::buttGap);
    const TWeldLineRes result = detectWeldLineViaTracking(scene.image, weld, {});
    const auto right = std::count_if(result.stripePts.begin(), result.stripePts.end(), [&](const cv::Point2f& p) {
      return std::abs(p.y - scene.truth.centreY[static_cast<std::size_t>(p.x)]) < 4.0;
    });
    share += static_cast<double>(right) / params.size.width;
    ++count;
  }
  EXPECT_NEAR(share / count, 0.65, 0.12);
}

}  // namespace
