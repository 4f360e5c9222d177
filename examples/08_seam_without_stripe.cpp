// A butt joint without a laser stripe: its own contrast, in one image and from frame to frame.
#include <zelWeldDetect.h>

#include "scenes/plate.h"

#include <iostream>

namespace {

// A drifting seam in place of a camera's frames.
cv::Mat grabFrame(int n) {
  const auto first = scenes::randomPlate(scenes::TPlateSeam::tight, scenes::TLevel::noisy, 3, {640, 480});
  scenes::TMotion motion;
  motion.driftPx = {1.5, 0.0};
  return renderPlate(scenes::plateFrameOf(first, motion, n)).image;
}

}  // namespace

int main() {
  TContrastSearch search;
  search.polarity = TSeamPolarity::dark;
  const TContourCenterLine line = findSeamByContrast(grabFrame(0), search);
  std::cout << line.pts.size() << " points, width " << line.widthPx << " px, direction " << line.directionDeg
            << " degrees, confidence " << line.confidence << '\n';

  TTrackerOptions options;
  options.source = TSeamSource::contrast;
  options.contrast = search;
  TWeldTracker tracker(TWeldParams(), options);
  for (int n = 0; n < 5; ++n) {
    const TTrackedSeam seam = tracker.track(grabFrame(n));
    if (seam.state == TSeamState::found) std::cout << "seam at " << seam.weldPos << '\n';
  }
}
