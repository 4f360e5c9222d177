// How often a tracking frame asks for heap memory.
#include "scenarios/scenario.h"
#include "scenes/groove.h"
#include "support/heap.h"
#include "support/reel.h"

#include <gtest/gtest.h>
#include <opencv2/core/utility.hpp>

#include <utility>
#include <vector>

namespace {

using scenes::TJoint;
using scenes::TLevel;

constexpr long kMaxPerTrackingFrame = 10;
constexpr int kFrames = 4;

TEST(Allocations, aTrackingFrameOfAGapMakesNoMoreThanTen) {
  TWeldParams params = scenes::weldParamsFor(TJoint::buttGap);
  for (const TLevel level : {TLevel::clean, TLevel::noisy, TLevel::harsh}) {
    const auto first = scenes::randomScene(TJoint::buttGap, level, 1, scenario::kFrameSize);
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

// The stripe points of the result, the points of its measurement, and nothing else. The frames come there and
// back, again and again: the first times show the tracker the most that it has to remember at once.
void expectTwoRequestsPerFrame(const TWeldParams& params, const TTrackerOptions& options,
                               const std::vector<cv::Mat>& images, int minFound) {
  TWeldTracker tracker(params, options);
  std::vector<cv::Mat> round = images;
  round.insert(round.end(), images.rbegin(), images.rend());
  for (int n = 0; n < 4; ++n) {
    for (const cv::Mat& image : round) tracker.track(image);
  }
  int found = 0;
  for (const cv::Mat& image : round) {
    const long before = heap::requests();
    const TWeldLineRes result = tracker.track(image).line;
    EXPECT_LE(heap::requests() - before, 2);
    found += result.isFound ? 1 : 0;
  }
  EXPECT_GE(found, minFound);
}

TTrackerOptions withExtraction(TStripeExtraction extraction) {
  TTrackerOptions options = TTrackerOptions::exact();
  options.extraction = extraction;
  return options;
}

TEST(Allocations, aTrackerThatHasSeenTheLikeAsksTwicePerFrame) {
  cv::setNumThreads(1);  // a thread of OpenCV that gets its first work late asks for memory then
  for (const auto& [joint, type] : scenes::detectedJoints()) {
    for (const TLevel level : {TLevel::clean, TLevel::noisy, TLevel::harsh}) {
      SCOPED_TRACE(testing::Message() << scenes::shortNameOf(joint) << ", " << scenario::nameOf(level));
      const auto first = scenes::randomScene(joint, level, 1, scenario::kFrameSize);
      std::vector<cv::Mat> images;
      std::vector<cv::Mat> inColour;
      for (const scenes::TScene& scene : reel::render(first, reel::drift({1.0, 0.4}, 1.0), kFrames)) {
        images.push_back(scene.image);
        inColour.push_back(reel::inColour(scene.image));
      }
      const TWeldParams params = scenes::weldParamsFor(joint);
      // The exact rules with ridges find a harsh V in half of the frames.
      const int minFound = scenes::isGroove(joint) ? kFrames : kFrames + 1;
      for (const auto extraction : {TStripeExtraction::edgePairs, TStripeExtraction::ridge}) {
        SCOPED_TRACE(testing::Message() << "extraction " << static_cast<int>(extraction));
        expectTwoRequestsPerFrame(params, withExtraction(extraction), images, minFound);
        if (level == TLevel::clean)
          expectTwoRequestsPerFrame(params, withExtraction(extraction), inColour, minFound);
      }
      SCOPED_TRACE("default options");
      expectTwoRequestsPerFrame(params, TTrackerOptions(), images, minFound);
    }
  }
}

}  // namespace
