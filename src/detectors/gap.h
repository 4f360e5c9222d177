// Butt gap: one straight stripe broken by a gap.
#pragma once

#include "detectors/seam.h"

namespace weld {

// The widest interruption along the one line through the stripe. Not found: isFound false with the stripe
// points of the frame.
TSeam findGap(const TFrame& frame, const TStripe& stripe, const TPrevious& previous);

}  // namespace weld
