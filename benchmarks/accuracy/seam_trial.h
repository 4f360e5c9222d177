// Runs of the library over rendered scenes, and what they score.
#pragma once

#include "scenes/score.h"
#include "zelWeldDetect.h"

#include <cstdint>
#include <vector>

namespace accuracy {

using scenes::TSeamCase;

struct TTrialScore : scenes::TScore {
  int lost = 0;                  // frames without a seam after the first one of a sequence that found it
  int longestLoss = 0;           // most such frames in a row
  std::vector<double> floorsPx;  // of the frames whose arithmetic sets a floor
};

// First detection on one scene each: the first frame of a tracker.
TTrialScore scoreFirstDetections(const TSeamCase& trial, scenes::TLevel level, int scenes,
                                 const TTrackerOptions& options);

// Sequences of 60 frames that drift and jitter. Held frames do not count as found, nor do held back ones.
TTrialScore scoreSequences(const TSeamCase& trial, scenes::TLevel level, int sequences,
                           const TTrackerOptions& options);

// Found frames among scenes that do not hold the joint: blank, noise alone, a straight stripe, other joints.
scenes::TScore scoreFalsePositives(const TSeamCase& trial, int scenesEach, const TTrackerOptions& options);

}  // namespace accuracy
