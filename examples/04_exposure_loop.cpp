// An exposure loop: the figures of each frame set the exposure of the next one, until there is nothing to change.
#include <zelWeldDetect.h>

#include <opencv2/imgproc.hpp>

#include <iostream>

namespace {

constexpr int mostFrames = 20;

// What your camera does: more exposure makes stripe and surroundings brighter until they clip.
cv::Mat grabFrame(double exposureMs) {
  cv::Mat brightness(480, 640, CV_32FC1, cv::Scalar(6));  // grey levels per ms
  cv::line(brightness, {0, 250}, {300, 240}, cv::Scalar(60), 7);
  cv::line(brightness, {340, 239}, {639, 229}, cv::Scalar(60), 7);
  cv::GaussianBlur(brightness, brightness, {7, 7}, 0);
  cv::Mat frame;
  brightness.convertTo(frame, CV_8U, exposureMs);
  return frame;
}

// Returns the exposure time that suits, or 0 when none was found.
double adjustExposure(double exposureMs) {
  LightingAdaptation::TExposureTarget target;
  target.meanGray = 40;
  target.tolerance = 4;
  for (int n = 0; n < mostFrames; ++n) {
    const cv::Mat frame = grabFrame(exposureMs);
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
