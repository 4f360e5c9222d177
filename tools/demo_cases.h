// What the demonstration shows: every joint that has a detector, and seams without a stripe.
#pragma once

#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tool {

// A drawn frame, and what is known about it.
struct TDemoFrame {
  cv::Mat image;
  std::optional<cv::Point2f> trueSeam;                   // none: of stripe presence
  std::function<double(const TWeldLineRes&)> errorOfPx;  // of what was found in it
};

struct TDemoCase {
  std::string name;
  std::string level;
  TWeldParams params;
  TTrackerOptions options;
  int frames = 30;          // per sequence
  bool skipsFirst = false;  // the first frame of a sequence never counts as found
  std::function<TDemoFrame(int sequence, int n)> draw;
};

// At the levels clean and noisy.
std::vector<TDemoCase> demoCases();

}  // namespace tool
