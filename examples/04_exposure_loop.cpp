// An exposure loop: the figures of each frame set the exposure of the next one, until there is nothing to change.
#include <zelWeldDetect.h>

#include "scenes/scene.h"

#include <cstdint>
#include <iostream>

namespace {

constexpr int mostFrames = 20;

// What your camera does: more exposure makes stripe and surroundings brighter until they clip.
cv::Mat grabFrame(double exposureMs, std::uint64_t n) {
  scenes::TSceneParams scene;
  scene.joint = scenes::TJoint::buttGap;
  scene.size = {640, 480};
  scene.seed = n;
  scene.look.peak = 60.0 * exposureMs;
  scene.look.rootPeak = 20.0 * exposureMs;
  scene.look.background = 6.0 * exposureMs;
  scene.look.noiseSigma = 2.0;
  return scenes::renderScene(scene).image;
}

// Returns the exposure time that suits, or 0 when none was found.
double adjustExposure(double exposureMs) {
  LightingAdaptation::TExposureTarget target;
  target.meanGray = 40;
  target.tolerance = 4;
  for (int n = 1; n <= mostFrames; ++n) {
    const cv::Mat frame = grabFrame(exposureMs, static_cast<std::uint64_t>(n));
    int meanGray = 0;
    int brightPixelNum = 0;
    LightingAdaptation::calcExposureParam(frame, meanGray, brightPixelNum);
    const double brightShare = brightPixelNum / static_cast<double>(frame.total());
    const double factor = LightingAdaptation::adviseExposureFactor(meanGray, brightShare, target);
    std::cout << exposureMs << " ms: mean grey level " << meanGray << ", bright pixels " << brightPixelNum
              << ", multiply by " << factor << '\n';
    if (factor == 1.0) return exposureMs;
    exposureMs *= factor;
  }
  return 0.0;
}

}  // namespace

int main() {
  const double fromDark = adjustExposure(0.2);
  const double fromBright = adjustExposure(60.0);
  return fromDark > 0.0 && fromBright > 0.0 ? 0 : 1;
}
