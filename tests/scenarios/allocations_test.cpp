// How often a tracking frame asks for heap memory.
#include "scenarios/scenario.h"
#include "support/heap.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

constexpr long kMaxPerTrackingFrame = 10;

TEST(Allocations, aTrackingFrameOfAGapMakesNoMoreThanTen) {
  TWeldParams params = scenes::weldParamsFor(scenes::TJoint::buttGap);
  for (const scenes::TLevel level : {scenes::TLevel::clean, scenes::TLevel::noisy, scenes::TLevel::harsh}) {
    const auto first = scenes::randomScene(scenes::TJoint::buttGap, level, 1, scenario::kFrameSize);
    TWeldLineRes previous = scenario::detect(params, scenes::renderScene(first).image);
    ASSERT_TRUE(previous.isFound) << scenario::nameOf(level);
    const cv::Mat next = scenes::renderScene(scenes::frameOf(first, {}, 1)).image;
    const long before = heap::requests();
    const TWeldLineRes result = detectWeldLineViaTracking(next, params, std::move(previous));
    const long made = heap::requests() - before;
    EXPECT_TRUE(result.isFound) << scenario::nameOf(level);
    EXPECT_GT(made, 0) << "requests are not counted";
    EXPECT_LE(made, kMaxPerTrackingFrame) << scenario::nameOf(level);
  }
}

}  // namespace
