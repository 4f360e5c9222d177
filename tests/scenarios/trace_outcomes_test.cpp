// Whatever a frame shows, its outcome agrees with the result and every attempt has a sentence.
#include "scenes/scene.h"
#include "support/detector_types.h"

#include <gtest/gtest.h>

namespace {

TEST(TraceOutcomes, scenesAlwaysHaveASentence) {
  TTrackerOptions options = TTrackerOptions::exact();
  options.keepTrace = true;
  for (const scenes::TJoint joint : {scenes::TJoint::lap, scenes::TJoint::corner, scenes::TJoint::vGroove}) {
    for (const TWeldType type : detector_types::kAll) {
      TWeldTracker tracker(detector_types::paramsFor(type), options);
      for (int n = 0; n < 3; ++n) {
        const auto scene = scenes::randomScene(joint, scenes::TLevel::harsh, 7 + n / 2, {640, 480});
        const bool isFound = tracker.track(scenes::renderScene(scene).image).state == TSeamState::found;
        const TFrameTrace& trace = tracker.lastTrace();
        EXPECT_EQ(isFound, trace.outcome == TWeldOutcome::found) << trace.sentence;
        for (const TTraceAttempt& attempt : trace.attempts) EXPECT_FALSE(attempt.sentence.empty());
      }
    }
  }
}

}  // namespace
