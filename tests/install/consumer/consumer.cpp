// A program of somebody else: draws a stripe with a gap and asks the library where the seam is.
#include <zelFunctions.h>
#include <zelWeldDetect.h>

#include <cmath>
#include <iostream>

namespace {

constexpr int gapLeft = 300;   // last column before the gap
constexpr int gapRight = 340;  // first column behind it
constexpr int ridgeRow = 240;

cv::Mat drawStripe() {
  cv::Mat frame(480, 640, CV_8UC1, cv::Scalar(0));
  for (int row = ridgeRow - 10; row <= ridgeRow + 10; ++row) {
    const double offset = (row - ridgeRow) / 3.0;
    frame.row(row).setTo(230.0 * std::exp(-offset * offset / 2.0));
  }
  frame.colRange(gapLeft + 1, gapRight).setTo(0);
  return frame;
}

}  // namespace

int main() {
  const cv::Mat frame = drawStripe();
  zel::setDebugStringSink([](const std::string& text) { std::cout << text << '\n'; });

  TWeldParams params;
  initWeldParameters(TWeldType::buttGap, params, TWeldPosType::centre);
  TWeldLineRes result;
  for (int n = 0; n < 3; ++n) {
    result = detectWeldLineViaTracking(frame, params, result);
    std::cout << "frame " << n << ": found " << result.isFound << " at " << result.weldPos << '\n';
    const double errorPx = std::hypot(result.weldPos.x - (gapLeft + gapRight) / 2.0, result.weldPos.y - ridgeRow);
    if (!result.isFound || errorPx > 2.0) return 1;
  }
  return 0;
}
