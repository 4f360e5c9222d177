#include "scenes/groove.h"
#include "scenes/joints.h"
#include "scenes/random.h"
#include "scenes/random_groove.h"
#include "scenes/random_real.h"
#include "scenes/scene.h"

#include <algorithm>

namespace scenes {
namespace {

constexpr double kDesignWidthPx = 1280.0;  // widths and steps below are meant for frames this wide
constexpr double kDimmestPeak = 110.0;     // grey level that the darker surface keeps
constexpr double kWhite = 255.0;
constexpr double kShortestFlankPx = 15.0;  // that the grooves below are drawn with, and less

void placeJoint(TJoint joint, double scale, TRandom& random, TGeometry& g) {
  g.seam = {random.uniform(0.3, 0.7), random.uniform(0.35, 0.65)};
  g.tiltDeg = random.uniform(-8.0, 8.0);
  g.gapPx = random.uniform(18.0, 60.0);
  g.stepPx = random.uniform(25.0, 120.0);
  g.overlapPx = 0.0;
  g.leftFlankDeg = random.uniform(14.0, 34.0);
  g.rightFlankDeg = -random.uniform(14.0, 34.0);
  g.depthPx = random.uniform(70.0, 150.0) * scale;
  g.plateWidthPx = random.uniform(480.0, 640.0) * scale;
  switch (joint) {
    case TJoint::lap:
      if (random.chance(0.5)) g.stepPx = -g.stepPx;
      g.overlapPx = -random.uniform(0.0, 8.0);
      break;
    case TJoint::corner:  // its flanks need room to rise and keep clear of the level
      g.seam.y = random.uniform(0.55, 0.8);
      g.tiltDeg = random.uniform(-6.0, 6.0);
      break;
    case TJoint::plate:  // must stay the highest piece in the frame
      g.seam.x = random.uniform(0.4, 0.6);
      g.tiltDeg = random.uniform(-3.0, 3.0);
      g.stepPx = random.uniform(60.0, 120.0) * scale;
      break;
    default:
      break;
  }
}

void lookClean(TRandom& random, TLook& look) {
  look.fwhmPx = random.uniform(8.0, 13.0);
  look.rootFwhmPx = look.fwhmPx * random.uniform(0.8, 1.0);
  look.peak = random.uniform(200.0, 250.0);
  look.rootPeak = look.peak * random.uniform(0.7, 1.0);
}

void lookNoisy(TRandom& random, TLook& look) {
  look.fwhmPx = random.uniform(10.0, 16.0);  // the edges of thinner ones come too close under noise
  look.rootFwhmPx = look.fwhmPx * random.uniform(0.8, 1.0);
  look.flatTop = random.uniform(0.6, 1.0);  // clipped Gaussians would make bright surfaces look wider
  look.brightnessRatio = random.uniform(1.0, 10.0);
  look.fade = random.uniform(0.0, 0.3);
  look.peak = std::max(random.uniform(200.0, 250.0), kDimmestPeak * look.brightnessRatio / (1.0 - look.fade));
  look.rootPeak = look.peak * random.uniform(0.5, 1.0);
  look.speckle = random.uniform(0.15, 0.35);
  look.speckleGrainPx = random.uniform(1.0, 4.0);
  look.noiseSigma = 8.0;
  look.background = random.chance(0.3) ? 0.0 : random.uniform(10.0, 40.0);
  look.texture = 0.4 * look.background;
}

void lookHarsh(const TGeometry& g, TRandom& random, TLook& look) {
  look.fwhmPx = random.uniform(11.0, 19.0);
  look.rootFwhmPx = look.fwhmPx * random.uniform(0.7, 1.0);
  look.brightnessRatio = random.uniform(1.0, 4.0);  // speckle breaks up what does not saturate
  look.peak = random.uniform(2.0, 6.0) * kWhite;
  look.rootPeak = look.peak * random.uniform(0.5, 1.0);
  look.speckle = random.uniform(0.2, 0.45);
  look.missingShare = random.uniform(0.02, 0.06);
  look.missingRunPx = std::min(8.0, 0.4 * g.gapPx);
  look.flare = random.uniform(0.0, 0.2);
  look.blobs = random.integer(1, 4);
  look.spatter = random.integer(3, 12);
  look.arcGlow = random.uniform(40.0, 140.0);
  look.ghostShare = random.uniform(0.2, 0.5);
  look.ghostOffsetPx = random.uniform(70.0, 140.0);
  look.ghostTiltDeg = random.uniform(-4.0, 4.0);
  look.ghostSpan = random.uniform(0.2, 0.6);
}

}  // namespace

TSceneParams randomScene(TJoint joint, TLevel level, std::uint64_t seed, cv::Size size) {
  TRandom random(seed, TStream::layout, static_cast<std::uint64_t>(joint));
  TSceneParams params;
  params.joint = joint;
  params.size = size;
  params.seed = seed;
  const double scale = size.width / kDesignWidthPx;
  placeJoint(joint, scale, random, params.geometry);
  if (isGroove(joint)) placeGroove(joint, level, scale, random, params.geometry);
  lookClean(random, params.look);
  if (level != TLevel::clean) lookNoisy(random, params.look);
  if (level == TLevel::harsh) lookHarsh(params.geometry, random, params.look);
  if (isGroove(joint)) lookGroove(level, random, params.look);
  if (level == TLevel::real) makeReal(scale, random, params);
  return params;
}

TWeldParams weldParamsFor(TJoint joint, TWeldPosType pos) {
  TWeldParams params;
  const bool hasType = joint != TJoint::blank;
  initWeldParameters(hasType ? weldTypeOf(joint) : TWeldType::stripePresence, params, pos);
  if (isGroove(joint)) params.dPara6 = kShortestFlankPx;
  return params;
}

}  // namespace scenes
