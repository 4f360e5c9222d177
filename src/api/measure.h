// Measurements of a frame's joint.
#pragma once

#include "detectors/seam.h"
#include "zelWeldJoint.h"

namespace weld {

struct TJoint;

// One for each kind of joint: fills what its stripe shows, of the type that `m` names. False: it does not show it.
bool measureGap(const TSeam& seam, TMemory* memory, TJointMeasurement& m);
bool measureLap(const TSeam& seam, TMemory* memory, TJointMeasurement& m);
bool measureCorner(const TSeam& seam, TMemory* memory, TJointMeasurement& m);
bool measurePlate(const TSeam& seam, TMemory* memory, TJointMeasurement& m);
bool measureGroove(const TSeam& seam, TMemory* memory, TJointMeasurement& m);

// Of a found seam on the stripe points that it was found with; not valid where they do not show the joint.
//   joint  null: nothing is measured
TJointMeasurement measureSeam(const TSeam& seam, const TJoint* joint, TMemory* memory);

}  // namespace weld
