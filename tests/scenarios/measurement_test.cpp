// What a found joint measures, against what was drawn, and what a stripe may be.
#include "scenes/joints.h"
#include "scenes/random_decoy.h"
#include "scenes/scene.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using scenes::TJoint;

scenes::TSceneParams sceneOf(TJoint joint) {
  scenes::TSceneParams scene;
  scene.joint = joint;
  scene.geometry.gapPx = 31.0;
  return scene;
}

TJointMeasurement measured(const scenes::TSceneParams& scene) {
  const TTrackedSeam seam = TWeldTracker(scenes::weldParamsFor(scene.joint)).track(renderScene(scene).image);
  EXPECT_EQ(seam.state, TSeamState::found);
  EXPECT_TRUE(seam.measurement.isValid);
  return seam.measurement;
}

TEST(Measurement, tellsTheMeasuresOfTheDrawnJoint) {
  const TJointMeasurement gap = measured(sceneOf(TJoint::buttGap));
  EXPECT_NEAR(gap.gapPx, 32.0, 1.0);
  EXPECT_NEAR(gap.mismatchPx, 0.0, 0.5);
  EXPECT_TRUE(std::isnan(gap.widthPx));
  const TJointMeasurement lap = measured(sceneOf(TJoint::lap));
  EXPECT_NEAR(lap.mismatchPx, 60.0, 1.0);
  EXPECT_EQ(lap.points.front().feature, TFeature::upperCorner);
  const TJointMeasurement corner = measured(sceneOf(TJoint::corner));
  EXPECT_NEAR(corner.leftAngleDeg, 25.0, 0.5);
  EXPECT_NEAR(corner.includedAngleDeg, 130.0, 1.0);
  const TJointMeasurement plate = measured(sceneOf(TJoint::plate));
  EXPECT_NEAR(plate.widthPx, 495.0, 6.0) << "between the outermost points on its line";
  const scenes::TSceneParams groove = randomScene(TJoint::vGroove, scenes::TLevel::clean, 3);
  const scenes::TMeasures truth = renderScene(groove).truth.measures;
  const TJointMeasurement v = measured(groove);
  EXPECT_NEAR(v.widthPx, truth.widthPx, 1.0);
  EXPECT_NEAR(v.leftAngleDeg, truth.leftAngleDeg, 1.0);
  EXPECT_GT(v.confidence, 0.5F);
}

TEST(Measurement, ofAPlainResultIsThatOfTheTrackerAndGarbageIsNotValid) {
  const scenes::TSceneParams scene = randomScene(TJoint::vGroove, scenes::TLevel::clean, 3);
  const TWeldParams params = scenes::weldParamsFor(TJoint::vGroove);
  TWeldLineRes line = TWeldTracker(params).track(renderScene(scene).image).line;
  EXPECT_NEAR(measureJoint(line, params).widthPx, measured(scene).widthPx, 1.0);
  EXPECT_FALSE(measureJoint({}, params).isValid);
  line.stripePts.front().y = std::numeric_limits<float>::quiet_NaN();
  EXPECT_FALSE(measureJoint(line, params).isValid);
  line.stripePts = {{5.0F, 1.0F}, {4.0F, 1.0F}};
  EXPECT_FALSE(measureJoint(line, scenes::weldParamsFor(TJoint::buttGap)).isValid) << "unsorted";
}

// Both sides of a gap are told apart wherever the seam is: at an edge, too, which is a point of the stripe.
TEST(Measurement, aGapIsAsWideFromEveryPosition) {
  TWeldLineRes line;
  line.isFound = true;
  for (int x = 0; x < 230; ++x) {
    if (x < 100 || x >= 130) line.stripePts.emplace_back(static_cast<float>(x), 50.0F);
  }
  for (const float x : {99.0F, 114.5F, 130.0F}) {
    line.weldPos = {x, 50.0F};
    EXPECT_NEAR(measureJoint(line, scenes::weldParamsFor(TJoint::buttGap)).gapPx, 31.0, 1e-6) << x;
  }
}

TEST(Measurement, theDrawnJointIsTheFirstCandidateAndAStraightStripeHasNone) {
  for (const TJoint joint : {TJoint::vGroove, TJoint::flareV, TJoint::corner, TJoint::buttGap}) {
    const auto found = recogniseJoint(renderScene(randomScene(joint, scenes::TLevel::clean, 3)).image);
    ASSERT_FALSE(found.empty()) << static_cast<int>(joint);
    EXPECT_EQ(found.front().weldType, scenes::weldTypeOf(joint));
    for (std::size_t i = 1; i < found.size(); ++i) EXPECT_LE(found[i].score, found[i - 1].score);
  }
  EXPECT_TRUE(recogniseJoint(renderScene(randomScene(TJoint::plain, scenes::TLevel::clean, 3)).image).empty());
  EXPECT_TRUE(recogniseJoint(cv::Mat()).empty());
  for (const auto decoy : {scenes::TDecoy::spatter, scenes::TDecoy::noise, scenes::TDecoy::texture}) {
    for (int seed = 1; seed <= 4; ++seed)
      EXPECT_TRUE(
          recogniseJoint(renderScene(scenes::randomDecoy(decoy, scenes::TLevel::harsh, seed)).image).empty());
  }
}

}  // namespace
