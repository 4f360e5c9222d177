// Is a candidate corner a corner?
#pragma once

#include "detectors/corner_flanks.h"
#include "detectors/corner_params.h"
#include "detectors/detector_object.h"

#include <opencv2/core.hpp>

namespace weld {

// Every plausibility test of a corner: points on both sides, density, angles, missing columns, flank ends. The
// object holds the column status of the frame.
bool checkCornerPlausible(const TDetectorObject& object, cv::Point2f corner, const TFlankPair& flanks,
                          cv::Size imageSize, const TCornerParams& params, const TTrace& trace = {});

// Angle between the directions from the corner to the first point of each flank, degrees, 0..180. Both flanks need
// points.
double calcIntersecAngle(const TFlankPair& flanks, cv::Point2f corner);

}  // namespace weld
