// One frame of a tracker: near the previous stripe or in the whole image, on edge pairs or on ridges. The order of
// the attempts.
#pragma once

#include "api/attempt.h"
#include "zelWeldTracker.h"

namespace weld {

// What the search knows of the frames before.
struct TSearchMemory {
  TPrevious last;       // a found one guides the search
  int columns = 0;      // with a centre on its stripe
  bool isHeld = false;  // it is of an earlier frame, and the last frame found none
};

// Runs the rules of the joint as often as the frame needs it. The seam, or what the last attempt gave.
//   options  in range.
TFound searchSeam(const TQuest& quest, const TTrackerOptions& options, const TSearchMemory& memory);

}  // namespace weld
