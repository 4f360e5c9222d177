// One frame: what to look for, a tracker, and what comes back.
#include <zelWeldDetect.h>

#include <opencv2/imgproc.hpp>

#include <iostream>

int main() {
  // A laser stripe across two plates with a 40 px gap between them; a camera's frame in your program.
  cv::Mat frame(480, 640, CV_8UC1, cv::Scalar(0));
  cv::line(frame, {0, 250}, {300, 240}, cv::Scalar(220), 7);
  cv::line(frame, {340, 239}, {639, 229}, cv::Scalar(220), 7);
  cv::GaussianBlur(frame, frame, {7, 7}, 0);

  TGapSettings settings;
  settings.minGapPx = 20.0;
  TWeldTracker tracker(settings.params());

  const TTrackedSeam seam = tracker.track(frame);
  if (seam.state != TSeamState::found) {
    std::cout << "no seam in this frame\n";
    return 1;
  }
  std::cout << "seam at " << seam.weldPos << ", " << seam.line.stripePts.size() << " stripe points\n";
  return 0;
}
