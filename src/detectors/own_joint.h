// Joints that a user's template describes.
#pragma once

#include "detectors/seam.h"
#include "profile/own_profiles.h"

namespace weld {

// The tracked point of the template, where the stripe shows the joint within all its ranges. auxVal1 and auxVal2
// are width and depth, px, auxVal3 the included angle, degrees, auxVal4 the gap, px, trackVal the mismatch of the
// plates, px; 0 for what the joint does not have. Follows the profile of the frame before where there is one. Not
// found: isFound false with the stripe points of the frame.
TSeam findOwnJoint(const TOwnProfiles& own, const TFrame& frame, const TStripe& stripe, const TPrevious& previous);

}  // namespace weld
