// What is measured of a groove lies where its surfaces are, not a fraction of a row beside.
#include "scenes/joints.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using scenes::TJoint;

double errorOf(const TJointMeasurement& measured, TFeature feature, const scenes::TTruth& truth,
               const char* name) {
  for (const TFeaturePoint& found : measured.points) {
    for (const scenes::TFeature& real : truth.features) {
      if (found.feature == feature && real.name == name)
        return std::hypot(found.pos.x - real.point.x, found.pos.y - real.point.y);
    }
  }
  return HUGE_VAL;
}

TEST(FineGrooves, AreReadAlongBowedFlanksAndAtTheMiddleOfTheLight) {
  const struct {
    const char* name;
    double tiltDeg, bowPx, fwhmPx, peak, noise, mostPx;
  } rows[] = {{"straight", 0.0, 0.0, 7.0, 200.0, 0.0, 0.1},
              {"bowed out", 4.0, -2.0, 7.0, 200.0, 5.0, 0.3},
              {"bowed in", -6.0, 2.0, 7.0, 200.0, 5.0, 0.3},
              {"saturated and noisy", 5.0, 0.0, 13.0, 900.0, 8.0, 0.3},
              {"thick and noisy", 0.0, 0.0, 14.0, 250.0, 8.0, 0.3}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    scenes::TSceneParams scene;
    scene.joint = TJoint::vGroove;
    scene.geometry.tiltDeg = row.tiltDeg;
    scene.geometry.leftFlankDeg = 40.0;
    scene.geometry.rightFlankDeg = -45.0;
    scene.geometry.gapPx = 0.0;
    scene.geometry.groove.emplace();
    scene.geometry.groove->leftBowPx = scene.geometry.groove->rightBowPx = row.bowPx;
    scene.look.fwhmPx = scene.look.rootFwhmPx = row.fwhmPx;
    scene.look.peak = scene.look.rootPeak = row.peak;
    scene.look.noiseSigma = row.noise;
    const scenes::TScene shown = scenes::renderScene(scene);
    TWeldTracker tracker(scenes::weldParamsFor(TJoint::vGroove));
    const TTrackedSeam seam = tracker.track(shown.image);
    ASSERT_EQ(seam.state, TSeamState::found);
    EXPECT_LE(errorOf(seam.measurement, TFeature::root, shown.truth, "root"), row.mostPx);
    EXPECT_LE(errorOf(seam.measurement, TFeature::leftShoulder, shown.truth, "leftShoulder"), row.mostPx);
    EXPECT_LE(errorOf(seam.measurement, TFeature::rightShoulder, shown.truth, "rightShoulder"), row.mostPx);
  }
}

// Rounded corners leave too little of the flat for two lines.
TEST(FineGrooves, AreOpenInAFlatRootBetweenRoundedCorners) {
  for (const double flatPx : {40.0, 60.0, 80.0}) {
    SCOPED_TRACE(flatPx);
    scenes::TSceneParams scene;
    scene.joint = TJoint::uGroove;
    scene.geometry.leftFlankDeg = 54.0;
    scene.geometry.rightFlankDeg = -52.0;
    scene.geometry.depthPx = 190.0;
    scene.geometry.gapPx = 16.0;
    scene.geometry.groove.emplace();
    scene.geometry.groove->flatPx = flatPx;
    scene.geometry.groove->leftRadiusPx = 50.0;
    scene.geometry.groove->rightRadiusPx = 25.0;
    const scenes::TScene shown = scenes::renderScene(scene);
    TWeldTracker tracker(scenes::weldParamsFor(TJoint::uGroove));
    const TTrackedSeam seam = tracker.track(shown.image);
    ASSERT_EQ(seam.state, TSeamState::found);
    EXPECT_NEAR(static_cast<double>(seam.measurement.gapPx), 16.0, 1.0);
    EXPECT_LE(errorOf(seam.measurement, TFeature::root, shown.truth, "root"), 0.5);
    EXPECT_LE(errorOf(seam.measurement, TFeature::leftRoot, shown.truth, "leftRoot"), 0.6);
  }
}

}  // namespace
