// Every joint in whole frames: first detection, sequences that drift, what real frames hold beside the stripe; and
// the known limits of the rules, as docs/algorithms.md tells them to users.
#include "scenarios/budgets.h"
#include "support/seed.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using scenes::TJoint;

std::uint64_t seedOfTest() {
  const std::uint64_t seed = testing_support::seedOfCurrentTest();
  testing::Test::RecordProperty("seed", std::to_string(seed));
  return seed;
}

bool isOnStripe(const scenes::TTruth& truth, cv::Point2f p) {
  const double offset = truth.centreY[static_cast<std::size_t>(p.x)] - static_cast<double>(p.y);
  return std::abs(offset) <= budgets::kOnStripePx;  // not where there is no stripe: NaN
}

class WholeFrames : public testing::TestWithParam<budgets::TBudget> {};

TEST_P(WholeFrames, keepTheirBudget) {
  const budgets::TBudget& budget = GetParam();
  const TWeldParams params = scenes::weldParamsFor(budget.joint, budget.pos);
  const std::uint64_t seed = seedOfTest();
  SCOPED_TRACE(testing::Message() << "first seed " << seed);
  scenes::TScore score;
  int points = 0;
  int strays = 0;
  for (int i = 0; i < budget.series.scenes; ++i) {
    scenes::TSceneParams first = scenes::randomScene(budget.joint, budget.level, seed + i, scenario::kFrameSize);
    if (budget.beside.apply != nullptr) budget.beside.apply(first.look);
    TWeldLineRes result;
    for (const scenes::TScene& scene : reel::render(first, budget.series.motion, budget.series.frames)) {
      result = scenario::detect(params, scene.image, result);
      score.add({budget.joint, budget.pos}, scene.truth, result);
      for (const cv::Point2f p : result.stripePts) strays += isOnStripe(scene.truth, p) ? 0 : 1;
      points += static_cast<int>(result.stripePts.size());
    }
  }
  EXPECT_GE(score.foundShare(), budget.minFoundShare);
  EXPECT_LE(score.errorAt(0.5), budget.maxMedianPx);
  EXPECT_LE(score.errorAt(0.9), budget.max90Px);
  EXPECT_GT(points, score.frames * 100);
  EXPECT_LE(strays, budget.beside.maxStrayShare * points);
}

INSTANTIATE_TEST_SUITE_P(Joints, WholeFrames, testing::ValuesIn(budgets::kBudgets),
                         [](const auto& budget) { return budgets::nameOf(budget.param); });

TEST(BlankFrames, giveNoSeamOfAnyJoint) {
  const std::uint64_t seed = seedOfTest();
  for (const double noise : {0.0, 12.0}) {
    auto blank = scenes::randomScene(TJoint::blank, scenes::TLevel::noisy, seed, scenario::kFrameSize);
    blank.look.noiseSigma = noise;
    const cv::Mat image = scenes::renderScene(blank).image;
    for (const auto& [joint, type] : scenes::detectedJoints())
      EXPECT_FALSE(scenario::detect(scenes::weldParamsFor(joint), image).isFound)
          << scenes::shortNameOf(joint) << noise;
  }
}

// The jump leaves the bands around the previous stripe. Even the corner, which tries ridges in the same frame, is
// refused: the columns of the bands count as missing.
TEST(JumpingSeam, isLostForOneFrame) {
  constexpr int kJumpAtFrame = 3;
  const std::uint64_t seed = seedOfTest();
  const scenes::TMotion motion = reel::withJump({}, kJumpAtFrame, {60.0, 180.0});
  for (const TJoint joint : reel::kRuled) {
    scenes::TSceneParams first = scenes::randomScene(joint, scenes::TLevel::clean, seed, scenario::kFrameSize);
    first.geometry.seam.y = joint == TJoint::corner ? 0.55 : 0.35;
    TWeldLineRes result;
    int n = 0;
    for (const scenes::TScene& scene : reel::render(first, motion, kJumpAtFrame + 3)) {
      result = scenario::detect(scenes::weldParamsFor(joint), scene.image, result);
      EXPECT_EQ(result.isFound, n++ != kJumpAtFrame) << scenes::shortNameOf(joint) << " seed " << seed;
    }
  }
}

cv::Mat levelGap(double fwhmPx) {
  scenes::TSceneParams scene;
  scene.size = {640, 480};
  scene.look.fwhmPx = scene.look.rootFwhmPx = fwhmPx;
  return scenes::renderScene(scene).image;
}

TEST(Limits, thinBrightStripeGivesCentresOnRidgesAlone) {
  const TWeldParams gap = scenes::weldParamsFor(TJoint::buttGap);
  EXPECT_GT(scenario::detect(gap, levelGap(10.0)).stripePts.size(), 500U);
  EXPECT_TRUE(scenario::detect(gap, levelGap(3.0)).stripePts.empty());
  EXPECT_GT(scenario::detect(TPresenceSettings{true, false}.params(), levelGap(3.0)).stripePts.size(), 500U);
}

TEST(Limits, trackedStripeWinsColumnsBackOnItsRightOnly) {
  const TWeldParams params = scenes::weldParamsFor(TJoint::buttGap);
  const cv::Mat whole = levelGap(10.0);
  cv::Mat cut = whole.clone();
  cut.colRange(0, 100).setTo(0);
  cut.colRange(560, 640).setTo(0);
  const TWeldLineRes first = scenario::detect(params, whole);
  const TWeldLineRes cutResult = scenario::detect(params, cut, first);
  const TWeldLineRes later = scenario::detect(params, whole, cutResult);
  ASSERT_TRUE(first.isFound && cutResult.isFound && later.isFound);
  EXPECT_LT(first.stripePts.front().x, 10.0F);
  EXPECT_EQ(cutResult.stripePts.front().x, 100.0F);
  EXPECT_EQ(later.stripePts.front().x, 100.0F);
  EXPECT_EQ(cutResult.stripePts.back().x, 559.0F);
  EXPECT_GT(later.stripePts.back().x, 630.0F);
}

}  // namespace
