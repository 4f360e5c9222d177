// A tracker with the exact options is the plain entry point with a memory.
#include "scenario.h"
#include "support/checksum.h"
#include "support/reel.h"
#include "zelFunctions.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using scenes::TJoint;
using scenes::TLevel;

constexpr int kFrames = 12;
// Drifts, then jumps out of the search bands, so that tracking, loss and recovery all come up.
TEST(TrackerExact, sequencesGiveTheResultsOfThePlainEntryPoint) {
  const scenes::TMotion motion = reel::withJump(reel::drift({1.0, 0.4}, 1.0), kFrames / 2, {10.0, 150.0});
  for (const TJoint joint : {TJoint::buttGap, TJoint::lap, TJoint::corner, TJoint::plate, TJoint::plain}) {
    for (const TLevel level : {TLevel::clean, TLevel::harsh}) {
      const scenes::TSceneParams first = scenes::randomScene(joint, level, 77);
      TWeldParams params = scenes::weldParamsFor(joint);
      TWeldTracker tracker(params, TTrackerOptions::exact());
      TWeldLineRes previous;
      std::vector<scenes::TScene> frames = reel::render(first, motion, kFrames);
      frames[3].image = cv::Mat();
      for (const scenes::TScene& frame : frames) {
        previous = detectWeldLineViaTracking(frame.image, params, previous);
        EXPECT_EQ(checksumOf(previous), checksumOf(tracker.track(frame.image).line)) << scenes::shortNameOf(joint);
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
