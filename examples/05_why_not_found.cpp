// Why a frame gave no seam: the tracker's trace names the test that failed, by how much, and which parameter sets
// the limit.
#include <zelWeldDetect.h>

#include <opencv2/imgproc.hpp>

#include <cmath>
#include <iostream>

namespace {

void print(const TFrameTrace& trace) {
  std::cout << trace.sentence << '\n';
  for (const TTraceAttempt& attempt : trace.attempts) {
    std::cout << "  " << attempt.columnsWithCentre << " of " << attempt.columnsScanned
              << " columns show a stripe, " << attempt.modalWidthPx << " px thick\n";
    for (const TTraceFilter& filter : attempt.filters) {
      std::cout << "  " << filter.name << ": " << filter.before << " -> " << filter.after << " points\n";
    }
    for (const TTraceCheck& check : attempt.checks) {
      std::cout << (check.passed ? "  passed  " : "  FAILED  ") << check.name;
      if (!std::isnan(check.limit)) {
        std::cout << ": " << check.measured << ' ' << check.unit << ", limit " << check.limit << ' '
                  << check.parameter;
      }
      std::cout << '\n';
    }
  }
}

// Two plates that overlap, one stepPx above the other.
cv::Mat grabFrame(int stepPx) {
  cv::Mat frame(480, 640, CV_8UC1, cv::Scalar(0));
  cv::line(frame, {20, 240}, {310, 240}, cv::Scalar(220), 7);
  cv::line(frame, {315, 240 + stepPx}, {620, 240 + stepPx}, cv::Scalar(220), 7);
  cv::GaussianBlur(frame, frame, {7, 7}, 0);
  return frame;
}

}  // namespace

int main() {
  TLapSettings settings;
  settings.minStepPx = 40.0;
  TTrackerOptions options = TTrackerOptions::exact();  // one search per frame
  options.keepTrace = true;
  for (const int stepPx : {50, 30}) {
    TWeldTracker tracker(settings.params(), options);
    tracker.track(grabFrame(stepPx));
    print(tracker.lastTrace());
  }
}
