// A tracker's memory handed on to another one.
#include "scenario.h"
#include "support/checksum.h"
#include "support/reel.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using scenes::TJoint;
using scenes::TLevel;

constexpr int kFrames = 16;

// Drifts, jumps and goes dark, so that held seams, jumps that wait and profiles are handed on, too.
std::vector<scenes::TScene> framesOf(TJoint joint) {
  const scenes::TMotion motion = reel::withJump(reel::drift({1.0, 0.4}, 1.0), 9, {10.0, 80.0});
  std::vector<scenes::TScene> frames =
      reel::render(scenes::randomScene(joint, TLevel::noisy, 77), motion, kFrames);
  frames[5].image = cv::Mat::zeros(frames[5].image.size(), CV_8UC1);
  return frames;
}

TEST(TrackerMemory, anotherTrackerGoesOnToTheBit) {
  for (const TJoint joint : {TJoint::buttGap, TJoint::lap, TJoint::corner, TJoint::plate, TJoint::vGroove}) {
    const std::vector<scenes::TScene> frames = framesOf(joint);
    TWeldTracker first(scenes::weldParamsFor(joint));
    TWeldTracker relay(scenes::weldParamsFor(joint));
    for (const scenes::TScene& frame : frames) {
      const TTrackedSeam seam = first.track(frame.image);
      TWeldTracker next(scenes::weldParamsFor(joint));
      ASSERT_TRUE(next.setMemory(relay.memory())) << scenes::shortNameOf(joint);
      relay = std::move(next);
      const TTrackedSeam relayed = relay.track(frame.image);
      EXPECT_EQ(relayed.state, seam.state) << scenes::shortNameOf(joint);
      EXPECT_EQ(relayed.weldPos, seam.weldPos) << scenes::shortNameOf(joint);
      EXPECT_EQ(checksumOf(relayed.line), checksumOf(seam.line)) << scenes::shortNameOf(joint);
      EXPECT_EQ(relay.memory(), first.memory()) << scenes::shortNameOf(joint);
    }
    first.reset();
    EXPECT_EQ(first.memory(), TWeldTracker(scenes::weldParamsFor(joint)).memory());
  }
}

TEST(TrackerMemory, bytesThatNoTrackerMadeChangeNothing) {
  const std::vector<scenes::TScene> frames = framesOf(TJoint::vGroove);
  TWeldTracker tracker(scenes::weldParamsFor(TJoint::vGroove));
  tracker.track(frames[0].image);
  const std::string memory = tracker.memory();
  std::vector<std::string> wrong = {"", "memory", memory + memory, memory.substr(0, memory.size() - 1)};
  for (std::size_t i = 0; i < memory.size(); i += 97) {
    wrong.push_back(memory);
    wrong.back()[i] = static_cast<char>(wrong.back()[i] ^ 1);
  }
  for (const std::string& bytes : wrong) EXPECT_FALSE(tracker.setMemory(bytes));
  EXPECT_EQ(tracker.memory(), memory);
}

}  // namespace
