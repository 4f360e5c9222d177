// What is wanted of the default tracker: the only place where the wanted values stand.
#pragma once

#include "scenes/joints.h"
#include "seam_figures.h"

namespace accuracy {

struct TSeamTarget {
  TWanted foundPercent;
  TWanted medianPx;  // of the main point
  TWanted p95Px;
  TWanted pointsMedianPx;  // of the others
  TWanted pointsP95Px;
  TWanted wrongPercent;  // of the frames: found, but too far off
};

inline constexpr double kWrongPx = 5.0;
inline constexpr double kRightPx = 3.0;  // what a confidence speaks of

TSeamTarget seamTarget(scenes::TJoint joint, scenes::TLevel level, bool isTracking);
TWanted falseTarget(scenes::TJoint asked, scenes::TLevel level, bool isTracking);  // percent of the frames
TWanted recoveryTarget(scenes::TJoint joint, scenes::TLevel level);                // frames after a flash
TWanted recognitionTarget(scenes::TLevel level);                                   // percent of the scenes
TWanted silenceTarget(scenes::TLevel level);  // percent of the scenes without a joint, in which none is named
TWanted confidenceTarget();                   // share that is right less the confidence
TWanted sigmaTarget();                        // root mean square of error over sigma

}  // namespace accuracy
