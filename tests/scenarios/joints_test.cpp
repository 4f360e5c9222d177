// Every joint in whole frames: first detection on frames of their own, and sequences that drift.
#include "scenarios/budgets.h"
#include "scenarios/scenario.h"
#include "support/seed.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

constexpr int kScenes = 20;
constexpr int kSequenceFrames = 60;

std::string budgetName(const testing::TestParamInfo<budgets::TBudget>& info) {
  return budgets::nameOf(info.param);
}

void expectWithin(const scenario::TScore& score, const budgets::TBudget& budget) {
  EXPECT_GE(score.foundShare(), budget.minFoundShare);
  EXPECT_LE(score.errorAt(0.5), budget.maxMedianPx);
  EXPECT_LE(score.errorAt(0.9), budget.max90Px);
}

class FirstDetection : public testing::TestWithParam<budgets::TBudget> {};

TEST_P(FirstDetection, keepsItsBudget) {
  const budgets::TBudget& budget = GetParam();
  const TWeldParams params = scenes::weldParamsFor(budget.joint, budget.pos);
  const std::uint64_t seed = testing_support::seedOfCurrentTest();
  SCOPED_TRACE(testing::Message() << "first seed " << seed);
  scenario::TScore score;
  for (int i = 0; i < kScenes; ++i) {
    const scenes::TScene scene =
        scenes::renderScene(scenes::randomScene(budget.joint, budget.level, seed + i, scenario::kFrameSize));
    const TWeldLineRes result = scenario::detect(params, scene.image);
    score.add(budget.joint, budget.pos, scene, result);
  }
  expectWithin(score, budget);
}

INSTANTIATE_TEST_SUITE_P(Joints, FirstDetection, testing::ValuesIn(budgets::kFirstDetection), budgetName);

class Tracking : public testing::TestWithParam<budgets::TBudget> {};

TEST_P(Tracking, keepsItsBudgetOverADriftingSequence) {
  const budgets::TBudget& budget = GetParam();
  const TWeldParams params = scenes::weldParamsFor(budget.joint, budget.pos);
  const std::uint64_t seed = testing_support::seedOfCurrentTest();
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  scenes::TMotion motion;
  motion.driftPx = {1.5, 0.6};
  motion.jitterPx = 1.0;
  scenario::TScore score;
  const auto first = scenes::randomScene(budget.joint, budget.level, seed, scenario::kFrameSize);
  TWeldLineRes result;
  for (int n = 0; n < kSequenceFrames; ++n) {
    const scenes::TScene scene = scenes::renderScene(scenes::frameOf(first, motion, n));
    result = scenario::detect(params, scene.image, result);
    score.add(budget.joint, budget.pos, scene, result);
  }
  expectWithin(score, budget);
}

INSTANTIATE_TEST_SUITE_P(Joints, Tracking, testing::ValuesIn(budgets::kTracking), budgetName);

}  // namespace
