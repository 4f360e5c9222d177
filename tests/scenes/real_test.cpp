#include <gtest/gtest.h>

#include "measure.h"

#include <algorithm>

namespace {

using scenes::TJoint;
using scenes::TLevel;

// Change only when harsh grooves or real frames are changed on purpose.
constexpr std::uint64_t kGoldenImages = 6062374180522708438ULL;
constexpr std::uint64_t kGoldenTruths = 12973142047046991605ULL;

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
