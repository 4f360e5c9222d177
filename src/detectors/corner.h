// Corner: two straight flanks that meet.
#pragma once

#include "detectors/seam.h"

namespace weld {

// The intersection of a left and a right flank, their lines and the included angle. Not found: isFound false with
// the points of the last flanks.
TSeam findCorner(const TFrame& frame, const TStripe& stripe, const TPrevious& previous);

}  // namespace weld
