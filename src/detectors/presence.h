// Stripe presence: no seam point, only whether the stripe is there.
#pragma once

#include "detectors/seam.h"

namespace weld {

// The stripe points of the frame, and isFound from comparing their number n with the previous number m: false
// when n is 0, m is 0 or 2n <= m < 3n, true otherwise.
TSeam findPresence(const TFrame& frame, const TStripe& stripe, const TPrevious& previous);

}  // namespace weld
