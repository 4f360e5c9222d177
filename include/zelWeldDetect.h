// zelWeldDetect: finds the weld seam in the camera image of a laser stripe. The only header that a caller needs.
//
// Once per frame hand a TWeldTracker (zelWeldTracker.h) the image: it returns where the seam is, remembers the
// frame before, and tells why a frame gave no seam. detectWeldLineViaTracking below is the plain call without a
// memory.
//
// Coordinates are image pixels: x is the column (to the right), y the row (downwards), pixel centres at
// whole numbers. Angles are degrees of atan(dy/dx) with y pointing down. The stripe runs from left to
// right; rotate the image first where the camera sees it upright.
#pragma once

#include "zelContrast.h"
#include "zelLighting.h"
#include "zelWeldDetectExport.h"
#include "zelWeldDetectVersion.h"
#include "zelWeldJob.h"
#include "zelWeldJoint.h"
#include "zelWeldSettings.h"
#include "zelWeldTemplate.h"
#include "zelWeldToolkit.h"
#include "zelWeldTrace.h"
#include "zelWeldTracker.h"
#include "zelWeldTypes.h"

#include <opencv2/core.hpp>

// Marks params as initialised for a joint: sets isInit, weldType and weldPosType and nothing else. Any
// values are safe: a type without a detector finds nothing, an unknown position counts as centre.
ZELWELDDETECT_EXPORT void initWeldParameters(TWeldType type, TWeldParams& params, TWeldPosType pos);

// Finds the seam in one frame.
//   img      8-bit image with 1, 3 (BGR) or 4 (BGRA) channels; never written to. Other depths raise
//            cv::Exception once a detector reads them.
//   params   the joint; only read.
//   prevRes  the result of the previous frame, a default record on the first one. Any content is safe.
// An empty image or a joint without a detector gives the empty result; a frame without a seam gives a
// result with isFound false. Calls on different threads do not interfere.
ZELWELDDETECT_EXPORT TWeldLineRes detectWeldLineViaTracking(cv::Mat img, TWeldParams& params,
                                                            TWeldLineRes prevRes);
