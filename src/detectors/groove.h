// U and V grooves, single bevels and flare joints: profiles of lines and arcs.
#pragma once

#include "detectors/seam.h"

namespace weld {

// The root of the groove that the parameters name, or the point of it that the position asks for:
//   centre, lower  the root;  left, right  the shoulders;  upper  midway between the shoulders.
// A point that the joint does not have is the root. auxVal1 and auxVal2 are width and depth, px (0: not seen),
// auxVal3 the included angle, degrees, or the left radius of a flare joint, px, auxVal4 the root gap, px, or the
// right radius, trackVal the mismatch of the plates, px. Follows the profile of the frame before where there is
// one. Not found: isFound false with the stripe points of the frame.
TSeam findGroove(const TFrame& frame, const TStripe& stripe, const TPrevious& previous);

}  // namespace weld
