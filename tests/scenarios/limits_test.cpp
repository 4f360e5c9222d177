// Known limits of the rules, as docs/algorithms.md tells them to users. A change here is a change of behaviour.
#include "scenarios/scenario.h"
#include "scenes/scene.h"

#include <gtest/gtest.h>

namespace {

using scenes::TJoint;

scenes::TSceneParams levelGap() {
  scenes::TSceneParams scene;
  scene.joint = TJoint::buttGap;
  scene.size = {640, 480};
  scene.geometry.gapPx = 30.0;
  scene.look.fwhmPx = scene.look.rootFwhmPx = 10.0;
  return scene;
}

TEST(Limits, thinBrightStripeGivesNoCentres) {
  scenes::TSceneParams scene = levelGap();
  const TWeldParams params = scenes::weldParamsFor(TJoint::buttGap);
  EXPECT_GT(scenario::detect(params, scenes::renderScene(scene).image).stripePts.size(), 500U);
  scene.look.fwhmPx = scene.look.rootFwhmPx = 3.0;
  EXPECT_TRUE(scenario::detect(params, scenes::renderScene(scene).image).stripePts.empty());

  TWeldParams ridges = scenes::weldParamsFor(TJoint::plain);
  ridges.flagPara1 = true;
  EXPECT_GT(scenario::detect(ridges, scenes::renderScene(scene).image).stripePts.size(), 500U);
}

TEST(Limits, trackedStripeWinsColumnsBackOnItsRightOnly) {
  const TWeldParams params = scenes::weldParamsFor(TJoint::buttGap);
  const cv::Mat whole = scenes::renderScene(levelGap()).image;
  cv::Mat cut = whole.clone();
  cut.colRange(0, 100).setTo(0);
  cut.colRange(560, 640).setTo(0);
  const TWeldLineRes first = scenario::detect(params, whole);
  const TWeldLineRes cutResult = scenario::detect(params, cut, first);
  const TWeldLineRes later = scenario::detect(params, whole, cutResult);
  ASSERT_TRUE(first.isFound && cutResult.isFound && later.isFound);
  EXPECT_EQ(cutResult.stripePts.front().x, 100.0F);
  EXPECT_EQ(later.stripePts.front().x, 100.0F);
  EXPECT_EQ(cutResult.stripePts.back().x, 559.0F);
  EXPECT_GT(later.stripePts.back().x, 630.0F);
  EXPECT_LT(scenario::detect(params, whole).stripePts.front().x, 10.0F);
}

}  // namespace
