// The plain call, without a tracker: each result goes back in as the previous result of the next frame, so that
// the library searches near the last stripe. After a lost frame it searches the whole image again by itself.
#include <zelWeldDetect.h>

#include <opencv2/imgproc.hpp>

#include <iostream>

namespace {

constexpr int gapPx = 30;

// The seam drifts to the right and the stripe downwards; frame 10 is dark, as when the laser is shut off.
cv::Mat grabFrame(int n) {
  cv::Mat frame(480, 640, CV_8UC1, cv::Scalar(0));
  if (n == 10) return frame;
  const int gapLeft = 250 + 4 * n;
  const int row = 200 + 2 * n;
  cv::line(frame, {0, row + 20}, {gapLeft, row}, cv::Scalar(220), 7);
  cv::line(frame, {gapLeft + gapPx, row}, {639, row - 20}, cv::Scalar(220), 7);
  cv::GaussianBlur(frame, frame, {7, 7}, 0);
  return frame;
}

}  // namespace

int main() {
  TWeldParams params;
  initWeldParameters(TWeldType::buttGap, params, TWeldPosType::left);  // follow the left edge of the gap

  TWeldLineRes result;
  int found = 0;
  for (int n = 0; n < 20; ++n) {
    result = detectWeldLineViaTracking(grabFrame(n), params, result);
    if (result.isFound) {
      ++found;
      std::cout << "frame " << n << ": " << result.weldPos << '\n';
    } else {
      std::cout << "frame " << n << ": lost\n";
    }
  }
  return found == 19 ? 0 : 1;
}
