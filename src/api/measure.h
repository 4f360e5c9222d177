// Measurements of a frame's joint.
#pragma once

#include "detectors/seam.h"
#include "zelWeldJoint.h"

namespace weld {

// Of a found seam on the stripe points that it was found with; not valid where they do not show the joint.
TJointMeasurement measureSeam(const TSeam& seam, const TWeldParams& params, TMemory* memory);

}  // namespace weld
