#include "scenes/random_real.h"

#include "scenes/groove.h"

#include <algorithm>

namespace scenes {
namespace {

constexpr double kWhite = 255.0;

// Grains as wide as the stripe's flanks: about a third of the columns has no pair of edges.
void lookThin(TRandom& random, TLook& look) {
  look.fwhmPx = random.uniform(4.0, 6.0);
  look.rootFwhmPx = look.fwhmPx * random.uniform(0.9, 1.0);
  look.flatTop = 0.0;
  look.brightnessRatio = random.uniform(1.0, 2.5);
  look.peak = random.uniform(170.0, 260.0) * look.brightnessRatio;
  look.rootPeak = look.peak * random.uniform(0.7, 1.0);
  look.speckle = random.uniform(0.5, 0.85);
  look.speckleGrainPx = random.uniform(2.0, 3.0);
  look.noiseSigma = random.uniform(2.0, 5.0);
}

void lookSaturated(TRandom& random, TLook& look) {
  look.fwhmPx = random.uniform(10.0, 20.0);
  look.rootFwhmPx = look.fwhmPx * random.uniform(0.4, 1.0);
  look.brightnessRatio = random.uniform(1.0, 6.0);
  look.peak = random.uniform(2.0, 8.0) * kWhite;
  look.rootPeak = look.peak * random.uniform(0.15, 1.0);
}

// A dark break of 1 to 3 columns, a side step of about a pixel, a faint line in room light.
void tightenGap(TRandom& random, TSceneParams& params) {
  params.geometry.gapPx = random.uniform(1.05, 2.9);
  params.geometry.sideStepPx = random.uniform(0.5, 1.5) * (random.chance(0.5) ? 1.0 : -1.0);
  params.look.background = std::max(params.look.background, random.uniform(20.0, 45.0));
  params.troubles.dropAtPointPx = 0;  // what hides the break hides the seam
  params.troubles.toeBlobPx = 0.0;
  params.troubles.seamLine = random.uniform(5.0, 15.0);
}

// One straight stripe: the plate is the thin dim stretch between bright and wide ones, or the other way round.
void layFlush(TRandom& random, TSceneParams& params) {
  params.geometry.stepPx = random.uniform(-1.0, 1.0);
  const double ratio = random.uniform(2.0, 5.0);
  const bool isTableDark = random.chance(0.5);
  params.look.brightnessRatio = isTableDark ? ratio : 1.0 / ratio;
  params.look.peak = isTableDark ? random.uniform(200.0, 400.0) : random.uniform(80.0, 140.0);
  params.troubles.darkFwhmPx =
      params.look.fwhmPx * (isTableDark ? 1.0 / random.uniform(1.3, 2.0) : random.uniform(1.3, 2.0));
}

void troubleStripe(TRandom& random, TSceneParams& params) {
  TTroubles& troubles = params.troubles;
  troubles.dropShare = random.uniform(0.02, 0.1);
  // A piece's end that is lost cannot be told from its true end; a crossing can be carried on.
  const bool hasEnds =
      params.joint == TJoint::buttGap || params.joint == TJoint::lap || params.joint == TJoint::plate;
  if (random.chance(0.3)) troubles.dropAtPointPx = random.integer(3, hasEnds ? 4 : 25);
  if (random.chance(0.3)) troubles.darkRoughPx = random.uniform(0.8, 2.0);
  if (random.chance(0.2)) troubles.toeBlobPx = random.uniform(40.0, 60.0);
}

void troubleSurroundings(TRandom& random, TSceneParams& params) {
  TTroubles& troubles = params.troubles;
  TLook& look = params.look;
  if (random.chance(0.2)) {
    troubles.secondLaserShare = random.uniform(0.2, 0.6);
    troubles.secondLaserRise = random.uniform(1.6, 2.6);
    // Below a seam that is the lowest point: the two cross on either side of it.
    troubles.secondLaserDropPx = random.uniform(25.0, 70.0);
    troubles.mirrorLines = random.integer(1, 4);
  }
  if (random.chance(0.2)) troubles.torchLevel = random.uniform(60.0, 130.0);
  look.blobs = random.chance(0.5) ? random.integer(1, 4) : 0;
  look.spatter = random.chance(0.5) ? random.integer(2, 10) : 0;
  look.arcGlow = random.chance(0.3) ? random.uniform(20.0, 100.0) : 0.0;
  if (random.chance(0.25)) {
    look.ghostShare = random.uniform(0.1, 0.4);
    look.ghostOffsetPx = random.uniform(60.0, 140.0) * (random.chance(0.5) ? 1.0 : -1.0);
    look.ghostTiltDeg = random.uniform(-6.0, 6.0);
    look.ghostSpan = random.uniform(0.2, 0.6);
  }
}

// Ground flanks scatter the light: dim, and 5 to 10 times as rough as the plates.
void roughenFlanks(TSceneParams& params) {
  TRandom random(params.seed, TStream::flanks);
  if (random.chance(0.6)) return;
  params.troubles.flankRoughPx = random.uniform(0.8, 2.0);
  params.look.rootPeak *= random.uniform(0.3, 0.7);
}

}  // namespace

void makeReal(double scale, TRandom& random, TSceneParams& params) {
  const double kind = random.uniform(0.0, 1.0);
  if (kind < 0.35) lookThin(random, params.look);
  if (kind > 0.65) lookSaturated(random, params.look);
  troubleStripe(random, params);
  troubleSurroundings(random, params);
  if (params.joint == TJoint::corner) params.geometry.bowPx = random.uniform(-4.0, 4.0) * scale;
  if (params.joint == TJoint::buttGap && random.chance(0.5)) tightenGap(random, params);
  if (params.joint == TJoint::plate && random.chance(0.5)) layFlush(random, params);
  if (!isGroove(params.joint)) return;
  roughenFlanks(params);
  params.troubles.secondLaserDropPx *= params.geometry.groove->isRootUpper ? -1.0 : 1.0;
  if (random.chance(0.5)) params.look.flankGhostShare = random.uniform(0.1, 0.35);
}

}  // namespace scenes
