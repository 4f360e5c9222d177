// A sequence, and what a controller does in each of the three states. The camera is dark for two frames, as when
// the laser is shut off, and then for eight: the tracker bridges the first, and gives up in the second.
#include <zelWeldDetect.h>

#include <opencv2/imgproc.hpp>

#include <iostream>

namespace {

constexpr int gapPx = 30;

bool isDark(int n) {
  return n == 6 || n == 7 || (n >= 14 && n < 22);
}

// The seam drifts to the right and the stripe downwards.
cv::Mat grabFrame(int n) {
  cv::Mat frame(480, 640, CV_8UC1, cv::Scalar(0));
  if (isDark(n)) return frame;
  const int gapLeft = 200 + 4 * n;
  const int row = 200 + 2 * n;
  cv::line(frame, {0, row + 20}, {gapLeft, row}, cv::Scalar(220), 7);
  cv::line(frame, {gapLeft + gapPx, row}, {639, row - 20}, cv::Scalar(220), 7);
  cv::GaussianBlur(frame, frame, {7, 7}, 0);
  return frame;
}

}  // namespace

int main() {
  const TGapSettings settings;
  TWeldTracker tracker(settings.params(TWeldPosType::left));  // follow the left edge of the gap

  int found = 0;
  int held = 0;
  int lost = 0;
  for (int n = 0; n < 30; ++n) {
    const TTrackedSeam seam = tracker.track(grabFrame(n));
    std::cout << "frame " << n << ": ";
    switch (seam.state) {
      case TSeamState::found:  // a measurement: steer by it
        std::cout << "steer to " << seam.weldPos << '\n';
        ++found;
        break;
      case TSeamState::held:  // no measurement: keep the course, for the few frames that the tracker bridges
        std::cout << "keep the course at " << seam.weldPos << '\n';
        ++held;
        break;
      case TSeamState::lost:  // nothing to steer by: torch off, go on looking
        std::cout << "torch off\n";
        ++lost;
        break;
    }
  }
  return found == 20 && held == 5 && lost == 5 ? 0 : 1;
}
