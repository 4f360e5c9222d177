// Runs of the library over rendered scenes, and what they score.
#pragma once

#include "scenes/scene.h"
#include "zelWeldDetect.h"

#include <cstdint>
#include <vector>

namespace accuracy {

// A joint, and the point of it that is compared with the truth.
struct TCase {
  const char* name;
  scenes::TJoint joint;
  TWeldPosType pos;
};

struct TScore {
  int frames = 0;
  int found = 0;
  int lost = 0;                  // frames without a seam after the first one of a sequence that found it
  int longestLoss = 0;           // most such frames in a row
  std::vector<double> errorsPx;  // of the found frames
  std::vector<double> floorsPx;  // of the frames whose arithmetic sets a floor

  void add(const TScore& other);
};

// First detection on one scene each: the first frame of a tracker.
TScore scoreFirstDetections(const TCase& trial, scenes::TLevel level, int scenes, const TTrackerOptions& options);

// Sequences of 60 frames that drift and jitter. Held frames do not count as found, nor do held back ones.
TScore scoreSequences(const TCase& trial, scenes::TLevel level, int sequences, const TTrackerOptions& options);

// Found frames among scenes that do not hold the joint: blank, noise alone, a straight stripe, other joints.
TScore scoreFalsePositives(const TCase& trial, int scenesEach, const TTrackerOptions& options);

// Value below which that share of the errors lies; NaN without errors.
double quantile(std::vector<double> errors, double share);

}  // namespace accuracy
