// What a tracker lets through of the seams that its detector finds.
#pragma once

#include "api/joints.h"
#include "trace/frame.h"
#include "zelWeldTracker.h"

#include <opencv2/core.hpp>

namespace weld {

// True when the point of a found seam is one of the image: a number, inside, and not derived from a marker.
bool isSeamPointPossible(const TFrame& frame, const TSeam& seam, const TJointRules& rules);

// px.
double seamDistance(cv::Point2f a, cv::Point2f b);

// The shoulders of a groove.
struct TShoulders {
  bool areFound = false;
  cv::Point2f left;
  cv::Point2f right;
};

// What the test for jumps remembers.
struct TJumpMemory {
  bool hasSeam = false;
  cv::Point2f seam;       // the last one that was let through
  int pendingFrames = 0;  // frames in a row that showed a seam at another place
  cv::Point2f pending;    // that place in the last of them
  TShoulders shoulders;   // of the last seam that was let through
  bool isPendingFlush = false;
};

// Takes note of what a frame found. A groove has moved by as much as its shoulders, whatever its root does: a bead
// fills it, or it opens. False for a seam that may not be reported: one farther than maxJumpPx from the
// last one, until acceptAfterFrames frames in a row showed it at its new place, each within maxJumpPx of the one
// before.
bool passesJumpTest(const TSeam& found, const TTrackerOptions& options, TJumpMemory& memory, const TTrace& trace);

}  // namespace weld
