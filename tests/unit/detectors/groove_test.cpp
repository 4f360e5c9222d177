// Every way in which the search of a groove ends, and what it reports.
#include "scenes/scene.h"
#include "support/painted_frame.h"
#include "zelWeldDetect.h"
#include "zelWeldSettings.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace {

using scenes::TJoint;

constexpr double kExactPx = 1.2;

// Level, sharp and bright, 640 x 480; the root in the middle.
scenes::TSceneParams sceneOf(TJoint joint, double gapPx = 0.0) {
  scenes::TSceneParams p;
  p.joint = joint;
  p.size = {640, 480};
  p.geometry.seam = {0.5, 0.65};
  p.geometry.gapPx = gapPx;
  p.geometry.depthPx = 100.0;
  p.geometry.leftFlankDeg = joint == TJoint::uGroove ? 60.0 : 45.0;
  p.geometry.rightFlankDeg = joint == TJoint::uGroove ? -55.0 : -50.0;
  p.geometry.groove.emplace();
  return p;
}

struct TPiece {
  int fromX;
  int toX;
  double y;
  double k = 0.0;
};

cv::Mat painting(const std::vector<TPiece>& pieces) {
  cv::Mat image = painted::dark();
  for (const TPiece& p : pieces) painted::paintPiece(image, p.fromX, p.toX, p.y, p.k);
  return image;
}

// A V of flanks of 45 degrees.
cv::Mat paintedV(int depthPx) {
  return painting({{20, 320 - depthPx, 200.0},
                   {320 - depthPx, 320, 200.0, 1.0},
                   {320, 320 + depthPx, 200.0 + depthPx, -1.0},
                   {320 + depthPx, 620, 200.0}});
}

using TChange = std::function<void(TGrooveSettings&)>;
const TChange kUnchanged = [](TGrooveSettings&) {};

std::string reasonOf(const cv::Mat& image, TWeldType joint, const TChange& change) {
  TGrooveSettings settings;
  settings.joint = joint;
  change(settings);
  TTrackerOptions options;
  options.keepTrace = true;
  TWeldTracker tracker(settings.params(), options);
  tracker.track(image);
  return tracker.lastTrace().reason;
}

TEST(Groove, EveryCheckRefusesWithItsReason) {
  const auto rendered = [](TJoint joint, double gapPx = 0.0) {
    return scenes::renderScene(sceneOf(joint, gapPx)).image;
  };
  const cv::Mat v = rendered(TJoint::vGroove);
  const cv::Mat open = rendered(TJoint::vGroove, 30.0);
  const auto flanks = [](TAngleRange left, TAngleRange right) {
    return [=](TGrooveSettings& s) { s.leftFlankDeg = left, s.rightFlankDeg = right; };
  };
  const auto included = [](double min, double max) {
    return [=](TGrooveSettings& s) { s.includedAngleDeg = {min, max}; };
  };
  const struct {
    const char* reason;
    cv::Mat image;
    TChange change;
    TWeldType joint = TWeldType::vGroove;
  } rows[] = {
      {"found", v, kUnchanged},
      {"found", open, kUnchanged},
      {"found", open, [](TGrooveSettings& s) { s.allowsGap = false, s.maxClosedGapPx = 40.0; }},
      {"too few stripe points in a row", painting({{100, 118, 240.0}}), kUnchanged},
      {"no such joint in the stripe", painting({{20, 620, 240.0}}), kUnchanged},
      {"plates out of line",
       painting({{20, 240, 200.0},
                 {240, 300, 200.0, 1.0},
                 {300, 360, 260.0, -1.0},
                 {360, 470, 200.0, 0.25},
                 {470, 620, 227.5}}),
       kUnchanged},
      {"a step rather than a groove",
       painting({{20, 240, 200.0}, {240, 300, 200.0, 1.0}, {300, 460, 260.0, -1.0}, {460, 620, 100.0}}),
       kUnchanged},
      {"joint within the roughness of the stripe",
       painting({{20, 290, 200.0}, {290, 320, 200.0, 0.25}, {320, 350, 207.5, -0.25}, {350, 620, 200.0}}),
       kUnchanged},
      {"too little stripe beside a corner of the joint",
       painting({{20, 180, 200.0},
                 {180, 240, 160.0},
                 {240, 320, 200.0, 1.0},
                 {320, 400, 280.0, -1.0},
                 {400, 620, 200.0}}),
       kUnchanged},
      {"a plate or a curve explains the stripe as well", paintedV(12), kUnchanged},
      {"a flank or an arc is too rough", v, [](TGrooveSettings& s) { s.lineTolerancePx = 0.05; }},
      {"a flank or an arc is too short", v, [](TGrooveSettings& s) { s.minElementPx = 150.0; }},
      {"groove too shallow", v, [](TGrooveSettings& s) { s.minDepthPx = 102.0; }},
      {"groove too narrow", v, [](TGrooveSettings& s) { s.minWidthPx = 200.0; }},
      {"root gap where none is allowed", open, [](TGrooveSettings& s) { s.allowsGap = false; }},
      {"left flank angle too small", v, flanks({46.0, 80.0}, {-80.0, 0.0})},
      {"left flank angle too large", v, flanks({0.0, 44.0}, {-80.0, 0.0})},
      {"right flank angle too small", v, flanks({0.0, 80.0}, {-49.0, 0.0})},
      {"right flank angle too large", v, flanks({0.0, 80.0}, {-80.0, -51.0})},
      {"included angle too small", v, included(86.0, 120.0)},
      {"included angle too large", v, included(40.0, 84.0)},
      {"a flank is too flat",
       painting({{20, 120, 200.0, -0.3}, {120, 320, 170.0, 0.1}, {320, 420, 190.0, -1.0}, {420, 620, 90.0, -0.2}}),
       kUnchanged},
  };
  for (const auto& row : rows) EXPECT_EQ(reasonOf(row.image, row.joint, row.change), row.reason);
}

TEST(Groove, ReportsPointsAndMeasuresByJoint) {
  const struct {
    TJoint joint;
    double gapPx;
  } rows[] = {{TJoint::vGroove, 0.0}, {TJoint::vGroove, 30.0}, {TJoint::singleBevel, 20.0},
              {TJoint::uGroove, 0.0}, {TJoint::flareV, 0.0},   {TJoint::flareBevel, 0.0}};
  for (const auto& row : rows) {
    const scenes::TSceneParams params = sceneOf(row.joint, row.gapPx);
    const scenes::TScene scene = scenes::renderScene(params);
    SCOPED_TRACE(static_cast<int>(row.joint));
    TWeldLineRes line;
    for (const TWeldPosType pos : {TWeldPosType::left, TWeldPosType::right, TWeldPosType::upper,
                                   TWeldPosType::lower, TWeldPosType::centre}) {
      line = TWeldTracker(scenes::weldParamsFor(row.joint, pos), {}).track(scene.image).line;
      const cv::Point2d truth = scenes::seamPoint(row.joint, scene.truth, pos);
      EXPECT_LT(cv::norm(cv::Point2d(line.weldPos) - truth), kExactPx) << "position " << static_cast<int>(pos);
    }
    const scenes::TMeasures& m = scene.truth.measures;
    const bool isFlare = row.joint == TJoint::flareV || row.joint == TJoint::flareBevel;
    const bool isFlareBevel = row.joint == TJoint::flareBevel;
    EXPECT_NEAR(line.auxVal1, isFlareBevel ? 0.0 : m.widthPx, 1.0);
    EXPECT_NEAR(line.auxVal2, isFlareBevel ? 0.0 : m.depthPx, 1.0);
    EXPECT_NEAR(line.auxVal3, isFlare ? (isFlareBevel ? 60.0 : m.leftRadiusPx) : m.includedAngleDeg, 1.0);
    EXPECT_NEAR(line.auxVal4, isFlareBevel ? 0.0 : isFlare ? m.rightRadiusPx : m.gapPx, 1.5);
  }
}

// Plates tilted by 10 degrees: the square wall under the right one leans over the flank's end.
TEST(Groove, AWallThatHidesTheRootLeavesItUnsure) {
  const double k = -0.176;
  const cv::Mat image = painting({{10, 220, 220.0, k}, {220, 320, 183.0, 1.0}, {320, 630, 183.0 + 100.0 * k, k}});
  TWeldTracker tracker(scenes::weldParamsFor(TJoint::singleBevel));
  EXPECT_NE(tracker.track(image).state, TSeamState::found) << "before another frame shows it";
  const TTrackedSeam seam = tracker.track(image);
  ASSERT_EQ(seam.state, TSeamState::found);
  EXPECT_TRUE(std::isnan(seam.measurement.gapPx));
  EXPECT_LT(seam.measurement.confidence, 0.7F);
}

// A backing that is lit up to the left flank, a few rows under its end; the whole moves to the left.
TEST(Groove, ABackingThatJoinsAFlankInAStepIsNotItsEnd) {
  TWeldTracker tracker(scenes::weldParamsFor(TJoint::vGroove));
  for (const int x : {200, 195, 194, 188, 187}) {
    SCOPED_TRACE(x);
    const cv::Mat image = painting({{20, x, 200.0},
                                    {x, x + 100, 200.0, 1.28},
                                    {x + 100, x + 130, 332.0, 0.25},
                                    {x + 130, x + 258, 328.0, -1.0},
                                    {x + 258, 620, 200.0}});
    const TTrackedSeam seam = tracker.track(image);
    ASSERT_EQ(seam.state, TSeamState::found);
    EXPECT_LT(cv::norm(cv::Point2d(seam.weldPos) - cv::Point2d(x + 114.5, 327.4)), kExactPx);
  }
}

// The last columns of the left flank, burnt steeper: its light ends with them.
TEST(Groove, ABentEndOfAFlankIsItsEnd) {
  for (const double bend : {1.4, 1.7}) {
    SCOPED_TRACE(bend);
    const cv::Mat image = painting({{20, 100, 100.0},
                                    {100, 250, 100.0, 0.7},
                                    {250, 256, 205.0, 0.9},
                                    {256, 276, 210.4, bend},
                                    {330, 500, 210.4 + 20.0 * bend, -1.0},
                                    {500, 620, 60.4}});
    TWeldTracker tracker(scenes::weldParamsFor(TJoint::vGroove));
    const TTrackedSeam seam = tracker.track(image);
    ASSERT_EQ(seam.state, TSeamState::found);
    EXPECT_LT(std::abs(seam.weldPos.x - 302.5), kExactPx) << seam.weldPos;
  }
}

TEST(Groove, TrackingFollowsTheFormAndAnotherJointForgetsIt) {
  scenes::TSceneParams params = sceneOf(TJoint::vGroove, 30.0);
  TTrackerOptions options;
  options.keepTrace = true;
  TWeldTracker tracker(scenes::weldParamsFor(TJoint::vGroove), options);
  const auto expectFollowed = [&](const cv::Mat& image, bool isFollowed) {
    const cv::Point2d pos(tracker.track(image).weldPos);
    std::set<std::string> stages;
    for (const TTraceStage& stage : tracker.lastTrace().stages) stages.insert(stage.name);
    EXPECT_EQ(stages.count("profile followed"), isFollowed ? 1U : 0U);
    EXPECT_EQ(stages.count("profile search"), isFollowed ? 0U : 1U);
    return pos;
  };
  expectFollowed(scenes::renderScene(params).image, false);
  params.geometry.seam.x += 4.0 / 640.0;
  const scenes::TScene moved = scenes::renderScene(params);
  const cv::Point2d root = scenes::seamPoint(TJoint::vGroove, moved.truth, TWeldPosType::centre);
  EXPECT_LT(cv::norm(expectFollowed(moved.image, true) - root), kExactPx);
  tracker.setParams(scenes::weldParamsFor(TJoint::singleBevel));
  expectFollowed(moved.image, false);
}

}  // namespace
