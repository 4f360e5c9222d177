// Flanks that bow: the line through all of one misses its ends.
#pragma once

#include "profile/profile_layout.h"

namespace weld {

// Turns the lines at both ends of every flank to where its bow leads, by as much as the
// bow stands out of the scatter. The ends are still to be placed: meetAnew().
//   stripeWidthPx  0: not known
void followBows(const TOrientedCentres& centres, double stripeWidthPx, TProfileLayout& layout);

}  // namespace weld
