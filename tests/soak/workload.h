// A long day of mixed work for the library, the same every time: trackers and callers of the plain entry point
// follow seams, lose them, find them again, change parameters and start over.
#pragma once

#include "scenes/random.h"
#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <cstdint>
#include <vector>

namespace soak {

// Frames of one joint, drifting; rendered once and shown again and again.
struct TReel {
  TWeldParams params;
  std::vector<cv::Mat> images;
};

std::vector<TReel> renderReels();

class TWorkload {
public:
  explicit TWorkload(const std::vector<TReel>& sourceReels);

  // One frame for one of the actors.
  TWeldLineRes step();

private:
  struct TActor {
    std::size_t reel = 0;
    int position = 0;  // in the reel
    TWeldTracker tracker;
    TWeldLineRes previous;  // of the plain entry point
  };

  const cv::Mat& nextImage(TActor& actor);
  void disturb(TActor& actor);

  const std::vector<TReel>& reels;
  cv::Mat blank;
  scenes::TRandom random;
  std::vector<TActor> actors;
};

}  // namespace soak
