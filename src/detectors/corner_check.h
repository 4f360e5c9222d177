// Is a candidate corner a corner?
#pragma once

#include "detectors/corner_case.h"

#include <opencv2/core.hpp>

namespace weld {

// Every plausibility test of a corner: points on both sides, density, angles, missing columns, flank ends.
bool checkCornerPlausible(const TCornerCase& corner, cv::Point2f pos, const TFlankPair& flanks);

// Angle between the directions from the corner to the first point of each flank, degrees, 0..180. Both flanks need
// points.
double calcIntersecAngle(const TFlankPair& flanks, cv::Point2f corner);

}  // namespace weld
