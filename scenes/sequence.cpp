#include "scenes/plate.h"
#include "scenes/random.h"
#include "scenes/scene.h"

namespace scenes {
namespace {

constexpr double kProfileGrowth = 1.4;    // of gap, step and depth when the profile changes
constexpr double kFlankFlattening = 0.7;  // of the flank angles
constexpr double kPlateShrinking = 0.8;   // of the plate

constexpr double kFlashLevel = 120.0;
constexpr double kScrapPx = 27.0;

void flash(TTroubles& troubles) {
  troubles.flashLevel = kFlashLevel;
  troubles.scrapPx = kScrapPx;
}

void changeProfile(TGeometry& geometry) {
  geometry.gapPx *= kProfileGrowth;
  geometry.stepPx *= kProfileGrowth;
  geometry.depthPx *= kProfileGrowth;
  geometry.plateWidthPx *= kPlateShrinking;
  geometry.leftFlankDeg *= kFlankFlattening;
  geometry.rightFlankDeg *= kFlankFlattening;
  if (geometry.groove) {
    geometry.groove->leftRadiusPx *= kProfileGrowth;
    geometry.groove->rightRadiusPx *= kProfileGrowth;
    geometry.groove->flatPx *= kProfileGrowth;
  }
}

bool hasJumped(const TMotion& motion, int n) {
  return motion.jumpAtFrame >= 0 && n >= motion.jumpAtFrame;
}

cv::Point2d shiftOf(const TMotion& motion, int n, std::uint64_t seed, std::uint64_t frame) {
  TRandom random(seed, TStream::jitter, frame);
  const double jitterX = random.uniform(-motion.jitterPx, motion.jitterPx);
  const double jitterY = random.uniform(-motion.jitterPx, motion.jitterPx);
  const cv::Point2d jumped = hasJumped(motion, n) ? motion.jumpPx : cv::Point2d(0.0, 0.0);
  return motion.driftPx * n + cv::Point2d(jitterX, jitterY) + jumped;
}

}  // namespace

TSceneParams frameOf(const TSceneParams& first, const TMotion& motion, int n) {
  TSceneParams params = first;
  params.frame = first.frame + static_cast<std::uint64_t>(n);
  const cv::Point2d shiftPx = shiftOf(motion, n, params.seed, params.frame);
  if (hasJumped(motion, n) && motion.changesProfile) changeProfile(params.geometry);
  if (motion.flashAtFrame >= 0 && n >= motion.flashAtFrame && n < motion.flashAtFrame + motion.flashFrames)
    flash(params.troubles);
  params.geometry.seam.x += shiftPx.x / params.size.width;
  params.geometry.seam.y += shiftPx.y / params.size.height;
  params.geometry.tiltDeg += motion.tiltDriftDeg * n;
  return params;
}

TPlateParams plateFrameOf(const TPlateParams& first, const TMotion& motion, int n) {
  TPlateParams params = first;
  params.frame = first.frame + static_cast<std::uint64_t>(n);
  params.course.centre += shiftOf(motion, n, params.seed, params.frame);
  params.course.directionDeg += motion.tiltDriftDeg * n;
  return params;
}

}  // namespace scenes
