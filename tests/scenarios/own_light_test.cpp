// What the default tracker makes of the light about a joint: its middle, ghosts, blobs and flares.
#include "scenes/joints.h"
#include "scenes/score.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using scenes::TJoint;
using scenes::TLevel;

struct TLitJoint {
  const char* name;
  TJoint joint;
  TLevel level;
  std::uint64_t seed;
  double mostPx;  // of the error; below 0: not to be found
};

constexpr TLitJoint kLitJoints[] = {
    {"stripe whose edge pairs lie above its light", TJoint::corner, TLevel::noisy, 50002, 0.2},
    {"another one", TJoint::corner, TLevel::noisy, 50025, 0.2},
    {"flare on the corner", TJoint::corner, TLevel::real, 50015, 2.0},
    {"blob that the plate seems to go on in", TJoint::plate, TLevel::harsh, 50025, 0.5},
    {"flare over an end of a flush plate", TJoint::plate, TLevel::real, 50201, 4.0},
    {"torch beside an end of a flush plate", TJoint::plate, TLevel::real, 50064, 4.0},
    {"hole beside the end of a plate at a wall", TJoint::singleBevel, TLevel::harsh, 41085, 1.0},
    {"flare beside a sharp end at a wall", TJoint::singleBevel, TLevel::harsh, 41184, 1.0},
    {"flank that joins a backing in a corner", TJoint::singleBevel, TLevel::clean, 61103, 2.0},
    {"flare over an edge of the gap", TJoint::buttGap, TLevel::real, 60000, -1.0},
};

TEST(OwnLight, doesNotMoveAJoint) {
  for (const TLitJoint& lit : kLitJoints) {
    const scenes::TScene scene = renderScene(randomScene(lit.joint, lit.level, lit.seed));
    const TTrackedSeam seam = TWeldTracker(scenes::weldParamsFor(lit.joint)).track(scene.image);
    ASSERT_EQ(seam.state == TSeamState::found, lit.mostPx > 0.0) << lit.name;
    if (seam.state != TSeamState::found) continue;
    const cv::Point2d off = cv::Point2d(seam.weldPos) - seamPoint(lit.joint, scene.truth, TWeldPosType::centre);
    EXPECT_LT(std::sqrt(off.dot(off)), lit.mostPx) << lit.name;
  }
}

TEST(OwnLight, ofAGhostInAGapIsNotItsEdge) {
  const scenes::TScene scene = renderScene(randomScene(TJoint::buttGap, TLevel::harsh, 50082));
  const TTrackedSeam seam = TWeldTracker(scenes::weldParamsFor(TJoint::buttGap)).track(scene.image);
  ASSERT_EQ(seam.state, TSeamState::found);
  EXPECT_NEAR(seam.measurement.gapPx, 44.6, 1.5) << "46 columns from centre to centre";
}

TEST(OwnLight, isNoTightGapWhereAPlateEndsOrBetweenTwoLines) {
  const struct {
    const char* name;
    TJoint joint;
    std::uint64_t seed;
  } rows[] = {{"lost stretch at the end of a flush plate", TJoint::plate, 161001},
              {"second laser beside the stripe", TJoint::buttGap, 161005}};
  for (const auto& row : rows) {
    scenes::TMotion motion;
    motion.driftPx = {-1.2, 0.5};
    motion.jitterPx = 1.5;
    TWeldParams params = scenes::weldParamsFor(TJoint::buttGap);
    params.dPara8 = 1.0;  // minGapPx
    TWeldTracker tracker(params);
    for (int i = 0; i < 12; ++i) {
      const scenes::TSceneParams scene = frameOf(randomScene(row.joint, TLevel::real, row.seed), motion, i);
      const scenes::TScene frame = renderScene(scene);
      const TTrackedSeam seam = tracker.track(frame.image);
      if (seam.state != TSeamState::found) continue;
      EXPECT_EQ(row.joint, TJoint::buttGap) << row.name << ", frame " << i;
      const cv::Point2d truth = seamPoint(TJoint::buttGap, frame.truth, TWeldPosType::centre);
      EXPECT_NEAR(seam.weldPos.x, truth.x, 5.0) << row.name << ", frame " << i;
    }
  }
}

}  // namespace
