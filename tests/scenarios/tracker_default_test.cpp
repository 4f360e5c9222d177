// What a tracker with the default options does beyond the plain rules.
#include "scenario.h"
#include "support/reel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

using scenes::TJoint;
using scenes::TLevel;

cv::Mat frameAt(const scenes::TSceneParams& first, cv::Point2d shiftPx) {
  scenes::TSceneParams params = first;
  params.geometry.seam.x += shiftPx.x / params.size.width;
  params.geometry.seam.y += shiftPx.y / params.size.height;
  return scenes::renderScene(params).image;
}

cv::Mat dark() {
  return cv::Mat::zeros(scenario::kFrameSize, CV_8UC1);
}

class TrackerDefault : public testing::Test {
protected:
  const scenes::TSceneParams gap = scenes::randomScene(TJoint::buttGap, TLevel::clean, 3);
  const cv::Mat frame = frameAt(gap, {});
  const cv::Mat far = frameAt(gap, {120.0, 0.0});
  const cv::Mat lower = frameAt(gap, {0.0, 150.0});

  static TTrackerOptions traced() {
    TTrackerOptions options;
    options.keepTrace = true;
    return options;
  }
};

// A frame as it must end.
struct TStep {
  const char* name;
  cv::Mat image;
  TSeamState state;
  std::string reason;
  std::string attempts;  // "near" the last stripe or in the "whole" image, on edge pairs or on "ridges"
};

std::string attemptsOf(const TFrameTrace& trace) {
  std::string text;
  for (const TTraceAttempt& attempt : trace.attempts) {
    text += attempt.path == TSearchPath::tracking ? " near" : " whole";
    if (attempt.extraction == TStripeExtraction::ridge) text += " ridges";
  }
  return text;
}

void run(TWeldTracker& tracker, const std::vector<TStep>& steps) {
  for (const TStep& step : steps) {
    EXPECT_EQ(tracker.track(step.image).state, step.state) << step.name;
    EXPECT_EQ(tracker.lastTrace().reason, step.reason) << step.name;
    EXPECT_EQ(attemptsOf(tracker.lastTrace()), step.attempts) << step.name;
  }
}

TEST_F(TrackerDefault, holdsALostSeamThenGivesItUpThenFindsItAgain) {
  TWeldTracker tracker(scenes::weldParamsFor(TJoint::buttGap), traced());
  run(tracker,
      {{"first", frame, TSeamState::found, "found", " whole near"},
       {"tracked", frame, TSeamState::found, "found", " near"},
       {"dark", dark(), TSeamState::held, "too few columns with an edge pair", " near whole"},
       {"no image", cv::Mat(), TSeamState::held, "no image", ""},
       {"dark", dark(), TSeamState::held, "too few columns with an edge pair", " near whole"},
       {"dark for too long", dark(), TSeamState::lost, "too few columns with an edge pair", " near whole"},
       {"dark", dark(), TSeamState::lost, "too few columns with an edge pair", " whole"},
       {"back", frame, TSeamState::found, "found", " whole near"}});
}

TEST_F(TrackerDefault, holdsBackAJumpUntilItRepeats) {
  TWeldTracker tracker(scenes::weldParamsFor(TJoint::buttGap), traced());
  const TTrackedSeam before = tracker.track(frame);
  const TTrackedSeam held = tracker.track(far);
  EXPECT_EQ(held.state, TSeamState::held);
  EXPECT_EQ(held.weldPos, before.weldPos);
  EXPECT_FALSE(held.line.isFound || held.measurement.isValid) << "nothing of an earlier frame but the point";
  EXPECT_EQ(held.line.weldPos, cv::Point2f());
  EXPECT_EQ(tracker.lastTrace().sentence.find("repeats the seam at"), 0U) << tracker.lastTrace().sentence;
  EXPECT_EQ(attemptsOf(tracker.lastTrace()), " near whole");
  const cv::Point2f again = tracker.track(frame).line.weldPos;
  EXPECT_LT(cv::norm(again - before.weldPos), 0.05) << "one wrong frame leaves nothing behind";

  tracker.track(far);
  tracker.track(dark());
  EXPECT_EQ(tracker.track(far).state, TSeamState::held) << "in a row";
  tracker.track(far);
  const TTrackedSeam after = tracker.track(far);
  EXPECT_EQ(after.state, TSeamState::found);
  EXPECT_NEAR(after.weldPos.x, before.weldPos.x + 120.0F, 1.0F);
}

TEST_F(TrackerDefault, resetForgetsTheFramesBefore) {
  TWeldTracker tracker(scenes::weldParamsFor(TJoint::buttGap), traced());
  const std::string fresh = tracker.memory();
  tracker.track(frame);
  tracker.track(dark());
  EXPECT_NE(tracker.memory(), fresh);
  tracker.reset();
  EXPECT_EQ(tracker.memory(), fresh);
  EXPECT_TRUE(tracker.lastTrace().sentence.empty());
  run(tracker, {{"no jump", far, TSeamState::found, "found", " whole near"}});
  tracker.reset();
  run(tracker, {{"dark", dark(), TSeamState::lost, "too few columns with an edge pair", " whole"}});
}

// A stripe whose outer parts have dimmed is the same one: ridges fill it near its place.
TEST_F(TrackerDefault, looksNearAStripeOfWhichAThirdIsLeft) {
  cv::Mat dimmed = frame.clone();
  dimmed.colRange(0, 430) *= 0.15;
  dimmed.colRange(850, dimmed.cols) *= 0.15;
  TWeldTracker tracker(scenes::weldParamsFor(TJoint::buttGap), traced());
  run(tracker, {{"bright", frame, TSeamState::found, "found", " whole near"},
                {"dimmed", dimmed, TSeamState::found, "found", " near"}});
}

// Edge pairs see a narrow gap in the bright part of the stripe; ridges follow the dim part as well, and run on
// across the gap, which is dim as well.
TEST_F(TrackerDefault, refusesASeamInAFragmentThatRidgesDoNotSee) {
  cv::Mat image = dark();
  image.rowRange(500, 512).colRange(0, 700).setTo(200);
  image.rowRange(500, 512).colRange(700, image.cols).setTo(25);
  image.rowRange(500, 512).colRange(400, 406).setTo(25);
  TWeldParams params = scenes::weldParamsFor(TJoint::buttGap);
  params.dPara8 = 5.0;
  TWeldTracker tracker(params, traced());
  EXPECT_EQ(tracker.track(image).state, TSeamState::lost) << tracker.lastTrace().sentence;
}

TEST_F(TrackerDefault, searchesTheWholeImageInTheFrameThatLosesTheSeam) {
  for (const bool atOnce : {true, false}) {
    TTrackerOptions options = traced();
    options.maxJumpPx = 1000.0;
    options.searchWholeOnLoss = atOnce;
    TWeldTracker tracker(scenes::weldParamsFor(TJoint::buttGap), options);
    tracker.track(frame);
    EXPECT_EQ(tracker.track(lower).state, atOnce ? TSeamState::found : TSeamState::held);
    EXPECT_EQ(tracker.track(lower).state, TSeamState::found);
  }
}

// The rules lose columns on the left for good, and stripes of 151 to 301 columns altogether.
TEST_F(TrackerDefault, stripesGrowBackAndShortOnesStay) {
  cv::Mat cut = frame.clone();
  cut.colRange(0, 200).setTo(0);
  cut.colRange(1100, cut.cols).setTo(0);
  TWeldTracker tracker(scenes::weldParamsFor(TJoint::buttGap));
  tracker.track(frame);
  const std::size_t cutColumns = tracker.track(cut).line.stripePts.size();
  TTrackedSeam grown;
  for (int i = 0; i < 6; ++i) grown = tracker.track(frame);
  EXPECT_GT(grown.line.stripePts.size(), cutColumns + 350U);

  const int seamX = static_cast<int>(grown.weldPos.x);
  cv::Mat shortStripe = dark();
  const cv::Rect kept(seamX - 100, 0, 200, frame.rows);
  frame(kept).copyTo(shortStripe(kept));
  tracker.reset();
  for (int i = 0; i < 6; ++i) {
    const TTrackedSeam result = tracker.track(shortStripe);
    EXPECT_EQ(result.state, TSeamState::found) << i;
    EXPECT_NEAR(result.weldPos.x, grown.weldPos.x, 1.0F) << i;
  }
}

// Faint, thin and blurred stripes: edge pairs find no stripe, or too little of it.
TEST_F(TrackerDefault, automaticExtractionFindsWhatEdgePairsDoNot) {
  const struct {
    const char* name;
    double peak, fwhmPx;  // 0: as they are
  } rows[] = {{"crisp", 0.0, 0.0}, {"dim", 22.0, 0.0}, {"thin", 0.0, 2.5}, {"soft", 60.0, 45.0}};
  for (const TJoint joint : reel::kRuled) {
    for (const auto& row : rows) {
      const std::string where = std::string(scenes::shortNameOf(joint)) + ", " + row.name;
      scenes::TSceneParams params = scenes::randomScene(joint, TLevel::clean, 8);
      if (row.peak > 0.0) params.look.peak = params.look.rootPeak = row.peak;
      if (row.fwhmPx > 0.0) params.look.fwhmPx = params.look.rootFwhmPx = row.fwhmPx;
      TWeldParams weldParams = scenes::weldParamsFor(joint);
      weldParams.dPara1 = 5.0;  // the drop at the end of a dim piece is small
      const scenes::TScene scene = scenes::renderScene(params);
      const cv::Point2d truth = scenes::seamPoint(joint, scene.truth, TWeldPosType::centre);
      TWeldTracker tracker(weldParams, traced());
      for (int i = 0; i < 3; ++i) {
        const TTrackedSeam result = tracker.track(scene.image);
        ASSERT_NE(result.state, TSeamState::lost) << where << ", " << i << ": " << tracker.lastTrace().sentence;
        EXPECT_NEAR(result.weldPos.x, truth.x, 3.0) << where;
        EXPECT_NEAR(result.weldPos.y, truth.y, 3.0) << where;
      }
      bool hasAskedRidges = false;
      for (const TTraceStage& stage : tracker.lastTrace().stages)
        hasAskedRidges |= std::string(stage.name) == "ridge";
      EXPECT_EQ(hasAskedRidges, row.peak + row.fwhmPx > 0.0) << where;
    }
  }
}

TEST_F(TrackerDefault, anExceptionLeavesTheTrackerAsItWas) {
  TWeldTracker tracker(scenes::weldParamsFor(TJoint::buttGap), traced());
  const TTrackedSeam before = tracker.track(frame);
  const std::string sentence = tracker.lastTrace().sentence;
  EXPECT_THROW(tracker.track(cv::Mat::zeros(480, 640, CV_32FC1)), cv::Exception);
  EXPECT_EQ(tracker.lastTrace().sentence, sentence);
  EXPECT_LT(cv::norm(tracker.track(frame).line.weldPos - before.weldPos), 0.05);
  EXPECT_EQ(tracker.lastTrace().attempts.size(), 1U) << "still tracking";
}

TEST_F(TrackerDefault, refusesAPlateWhoseEndIsCutOff) {
  const scenes::TSceneParams whole = scenes::randomScene(TJoint::plate, TLevel::clean, 8, {320, 256});
  const cv::Mat cut = scenes::renderScene(whole).image.colRange(0, 246);
  const TWeldParams params = scenes::weldParamsFor(TJoint::plate);
  EXPECT_EQ(TWeldTracker(params, TTrackerOptions::exact()).track(cut).state, TSeamState::found);
  TWeldTracker tracker(params, traced());
  EXPECT_EQ(tracker.track(cut).state, TSeamState::lost);
  EXPECT_EQ(tracker.lastTrace().sentence, "corner without support");
}

TEST_F(TrackerDefault, optionsOutOfRangeCountAsTheNearestValidOnes) {
  TTrackerOptions options;
  options.guideMarginPx = -5;
  options.extraction = static_cast<TStripeExtraction>(-3);
  options.acceptAfterFrames = -2;
  options.holdFrames = -1;
  for (const double maxJumpPx : {-1.0, std::nan("")}) {
    options.maxJumpPx = maxJumpPx;
    TWeldTracker tracker(scenes::weldParamsFor(TJoint::buttGap), options);
    for (const cv::Mat& image : {frame, far, frame}) {
      EXPECT_EQ(tracker.track(image).state, TSeamState::found);
    }
  }
}

}  // namespace
