// One frame of a tracker: near the last stripe, else in the whole image.
#pragma once

#include "api/attempt.h"
#include "zelWeldTracker.h"

namespace weld {

// What the search knows of the frames before.
struct TSearchMemory {
  TPrevious last;           // a found one guides the search
  int columns = 0;          // of the best stripe that a recent frame's seam was found on
  int edgePairColumns = 0;  // of the last seam's stripe
};

// Runs the rules of the joint as often as the frame needs it. The seam, or what the last attempt gave.
//   options  in range.
TFound searchSeam(const TQuest& quest, const TTrackerOptions& options, const TSearchMemory& memory);

}  // namespace weld
