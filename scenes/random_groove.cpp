#include "scenes/random_groove.h"

#include "scenes/exact_math.h"

#include <algorithm>
#include <cmath>

namespace scenes {
namespace {

constexpr double kSteepestFlankDeg = 69.0;  // in the image
constexpr double kSteepestSlope = 3.3;      // a wall that leans by 16 degrees still hides
constexpr double kMostTiltDeg = 15.0;
constexpr double kMostURunPx = 280.0;  // columns from the root to a shoulder
constexpr double kLeastDepthPx = 40.0;

double anySign(TRandom& random, double value) {
  return random.chance(0.5) ? value : -value;
}

double between(TRandom& random, double reach) {
  return random.uniform(-reach, reach);
}

// What the levels differ in.
struct TRoughness {
  double mostShoulderRadiusPx;
  double mostBowPx;
};

TRoughness roughnessOf(TLevel level) {
  if (level == TLevel::clean) return {4.0, 0.0};
  if (level == TLevel::noisy) return {8.0, 0.6};
  if (level == TLevel::harsh) return {12.0, 2.5};
  return {12.0, 4.0};
}

// Deep, but with shoulders that stay in the frame.
void limitDepth(double scale, double runPx, TGeometry& g) {
  const double flattest = std::min(std::abs(g.leftFlankDeg), std::abs(g.rightFlankDeg));
  g.depthPx = std::max(kLeastDepthPx, std::min(g.depthPx, runPx * scale * tanDeg(flattest)));
}

// Half of the V and bevel joints are closed; an open root shows its hi-lo and, at times, its backing.
void openRoot(double scale, TRandom& random, TGeometry& g) {
  TGroove& groove = *g.groove;
  g.gapPx = random.chance(0.4) ? 0.0 : random.uniform(8.0, 45.0) * std::max(scale, 0.5);
  groove.mismatchPx = between(random, 12.0 * scale);
  groove.bendDeg = between(random, 3.0);
  groove.rootFacePx = random.uniform(0.0, 25.0) * scale;
  groove.backingShare = random.chance(0.6) ? random.uniform(0.5, 1.0) : 0.0;
  if (g.gapPx > 0.0) return;
  groove.mismatchPx = 0.0;
  groove.bendDeg = 0.0;
}

void placeFlanks(TJoint joint, double scale, TRandom& random, TGeometry& g) {
  TGroove& groove = *g.groove;
  const double steepest = std::min(62.0, kSteepestFlankDeg - std::abs(g.tiltDeg) - 1.5);
  g.leftFlankDeg = random.uniform(30.0, steepest);
  g.rightFlankDeg = -random.uniform(30.0, steepest);
  g.depthPx = random.uniform(70.0, 230.0) * scale;
  openRoot(scale, random, g);
  limitDepth(scale, kMostURunPx, g);
  if (joint != TJoint::singleBevel) return;
  // The wall leans away from the root in the image.
  const bool isWallLeft = !groove.isMirrored;
  const double lean = isWallLeft == groove.isRootUpper ? 1.0 : -1.0;
  g.tiltDeg = lean * std::abs(g.tiltDeg);
  groove.bendDeg = std::abs(g.tiltDeg) / kMostTiltDeg * groove.bendDeg;
}

void placeU(double scale, TRandom& random, TGeometry& g) {
  TGroove& groove = *g.groove;
  g.tiltDeg *= 0.7;
  const double steepest = kSteepestFlankDeg - std::abs(g.tiltDeg);
  g.leftFlankDeg = random.uniform(50.0, steepest);
  g.rightFlankDeg = -random.uniform(50.0, steepest);
  g.depthPx = random.uniform(80.0, 200.0) * scale;
  const bool isOneArc = random.chance(0.5);
  groove.flatPx = isOneArc ? 0.0 : random.uniform(30.0, 130.0) * scale;
  g.gapPx = isOneArc || random.chance(0.7) ? 0.0 : random.uniform(8.0, 25.0) * std::max(scale, 0.5);
  groove.mismatchPx = g.gapPx > 0.0 ? between(random, 8.0 * scale) : 0.0;
  const double widest = isOneArc ? 110.0 : 60.0;
  groove.leftRadiusPx = random.uniform(isOneArc ? 40.0 : 20.0, widest) * scale;
  groove.rightRadiusPx = isOneArc ? groove.leftRadiusPx : random.uniform(20.0, widest) * scale;
  for (double* radiusPx : {&groove.leftRadiusPx, &groove.rightRadiusPx}) {
    // The steeper wall keeps at least a third of its length.
    const TSinCos wall = sinCosDeg(std::max(g.leftFlankDeg, -g.rightFlankDeg));
    const double tangentPerRadius = wall.sin / (1.0 + wall.cos);
    *radiusPx = std::min(*radiusPx, 0.67 * g.depthPx / tangentPerRadius);
  }
}

void placeFlares(TJoint joint, double scale, TRandom& random, TGeometry& g) {
  TGroove& groove = *g.groove;
  g.tiltDeg *= 0.7;
  groove.isTube = random.chance(0.4);
  const double smallestPx = groove.isTube ? 140.0 : 70.0;
  groove.leftRadiusPx = random.uniform(smallestPx, smallestPx + 80.0) * scale;
  groove.rightRadiusPx = groove.leftRadiusPx * random.uniform(0.75, 1.3);
  g.gapPx = random.chance(0.5) ? 0.0 : random.uniform(2.0, 20.0) * std::max(scale, 0.5);
  groove.mismatchPx = joint == TJoint::flareV ? between(random, 8.0 * scale) : 0.0;
  // Under a rounded plate the flat one runs parallel to it; against a tube it may rise.
  g.leftFlankDeg = groove.isTube ? random.uniform(0.0, 30.0) : 0.0;
  g.rightFlankDeg = -g.leftFlankDeg;
}

}  // namespace

void placeGroove(TJoint joint, TLevel level, double scale, TRandom& random, TGeometry& g) {
  const TRoughness roughness = roughnessOf(level);
  TGroove& groove = g.groove.emplace();
  g.tiltDeg = between(random, kMostTiltDeg);
  groove.isRootUpper = random.chance(0.5);
  groove.isMirrored = random.chance(0.5);
  groove.isLeftDark = random.chance(0.5);
  g.seam.y = groove.isRootUpper ? random.uniform(0.3, 0.45) : random.uniform(0.55, 0.7);
  if (joint == TJoint::uGroove) {
    placeU(scale, random, g);
  } else if (joint == TJoint::vGroove || joint == TJoint::singleBevel) {
    placeFlanks(joint, scale, random, g);
  } else {
    placeFlares(joint, scale, random, g);
  }
  groove.shoulderRadiusPx = random.uniform(0.0, roughness.mostShoulderRadiusPx) * scale;
  groove.leftBowPx = between(random, roughness.mostBowPx * scale);
  groove.rightBowPx = between(random, roughness.mostBowPx * scale);
}

void lookGroove(TLevel level, TRandom& random, TLook& look) {
  look.steepestSlope = kSteepestSlope;
  look.slopeDimming = random.uniform(0.0, level == TLevel::harsh || level == TLevel::real ? 0.5 : 0.3);
  if (level != TLevel::harsh) return;
  look.missingRunPx = 8.0;
  look.ghostOffsetPx = anySign(random, look.ghostOffsetPx);
  if (random.chance(0.5)) look.flankGhostShare = random.uniform(0.1, 0.35);
}

}  // namespace scenes
