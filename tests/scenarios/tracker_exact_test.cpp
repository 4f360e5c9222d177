// A tracker with the exact options is the plain entry point with a memory.
#include "scenario.h"
#include "zelFunctions.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using scenes::TJoint;
using scenes::TLevel;

constexpr int kFrames = 12;
constexpr TJoint kJoints[] = {TJoint::buttGap, TJoint::lap, TJoint::corner, TJoint::plate, TJoint::plain};

// Drifts, then jumps out of the search bands, so that tracking, loss and recovery all come up.
scenes::TSceneParams sceneAt(const scenes::TSceneParams& first, int n) {
  scenes::TMotion motion;
  motion.driftPx = {1.0, 0.4};
  motion.jitterPx = 1.0;
  motion.jumpAtFrame = kFrames / 2;
  motion.jumpPx = {10.0, 150.0};
  return scenes::frameOf(first, motion, n);
}

bool haveSameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

void expectSameBits(const TWeldLineRes& a, const TWeldLineRes& b, const std::string& where) {
  EXPECT_EQ(a.isFound, b.isFound) << where;
  EXPECT_EQ(a.weldPos, b.weldPos) << where;
  EXPECT_EQ(a.stripePts, b.stripePts) << where;
  EXPECT_TRUE(haveSameBits(a.auxVal1, b.auxVal1) && haveSameBits(a.auxVal2, b.auxVal2)) << where;
  EXPECT_TRUE(haveSameBits(a.auxVal3, b.auxVal3) && haveSameBits(a.auxVal4, b.auxVal4)) << where;
  EXPECT_TRUE(haveSameBits(a.trackVal, b.trackVal)) << where;
}

TEST(TrackerExact, sequencesGiveTheResultsOfThePlainEntryPoint) {
  for (const TJoint joint : kJoints) {
    for (const TLevel level : {TLevel::clean, TLevel::harsh}) {
      const scenes::TSceneParams first = scenes::randomScene(joint, level, 77);
      TWeldParams params = scenes::weldParamsFor(joint);
      TWeldTracker tracker(params, TTrackerOptions::exact());
      TWeldLineRes previous;
      for (int n = 0; n < kFrames; ++n) {
        const cv::Mat image = n == 3 ? cv::Mat() : scenes::renderScene(sceneAt(first, n)).image;
        previous = detectWeldLineViaTracking(image, params, previous);
        expectSameBits(previous, tracker.track(image).line,
                       std::to_string(static_cast<int>(joint)) + " frame " + std::to_string(n));
      }
    }
  }
}

TEST(TrackerExact, twentyOnePlatesInARowShowOneMessage) {
  int messages = 0;
  zel::setParamBoolSource([](const std::string& name) { return name == "NeedPrintPlateWeldInfo"; });
  zel::setMessageSink([&](const std::string&, auto) { ++messages; });
  const cv::Mat image = scenes::renderScene(scenes::randomScene(TJoint::plate, TLevel::clean, 5)).image;
  for (const TTrackerOptions& options : {TTrackerOptions::exact(), TTrackerOptions()}) {
    messages = 0;
    TWeldTracker tracker(scenes::weldParamsFor(TJoint::plate), options);
    for (int n = 0; n < 21; ++n) EXPECT_EQ(tracker.track(image).state, TSeamState::found) << n;
    EXPECT_EQ(messages, 1);
  }
  zel::setParamBoolSource(nullptr);
  zel::setMessageSink(nullptr);
}

}  // namespace
