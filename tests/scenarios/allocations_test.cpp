// How often a tracking frame asks for heap memory. Counts operator new of the whole program, and leaves it alone
// under sanitizers, which bring their own.
#include "scenarios/scenario.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

constexpr int kMaxPerTrackingFrame = 10;

std::atomic<int> allocations{0};

}  // namespace

#ifndef __SANITIZE_ADDRESS__

void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

namespace {

TEST(Allocations, aTrackingFrameOfAGapMakesNoMoreThanTen) {
  TWeldParams params = scenes::weldParamsFor(scenes::TJoint::buttGap);
  for (const scenes::TLevel level : {scenes::TLevel::clean, scenes::TLevel::noisy, scenes::TLevel::harsh}) {
    const auto first = scenes::randomScene(scenes::TJoint::buttGap, level, 1, scenario::kFrameSize);
    TWeldLineRes previous = scenario::detect(params, scenes::renderScene(first).image);
    ASSERT_TRUE(previous.isFound) << scenario::nameOf(level);
    const cv::Mat next = scenes::renderScene(scenes::frameOf(first, {}, 1)).image;
    const int before = allocations;
    const TWeldLineRes result = detectWeldLineViaTracking(next, params, std::move(previous));
    const int made = allocations - before;
    EXPECT_TRUE(result.isFound) << scenario::nameOf(level);
    EXPECT_GT(made, 0) << "operator new is not counted";
    EXPECT_LE(made, kMaxPerTrackingFrame) << scenario::nameOf(level);
  }
}

}  // namespace

#endif
