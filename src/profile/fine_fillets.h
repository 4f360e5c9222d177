// Rounded corners where the grey levels have them.
#pragma once

#include "profile/profile_layout.h"
#include "trace/frame.h"

namespace weld {

// Fits the rounded corner behind element j anew, tangent to the lines as they lie now, and ends both elements
// where it touches them. Its radius stays where fewer than 12 columns tell it, or where it would change by a
// quarter.
void roundAnew(const TFrame& frame, const TOrientedCentres& centres, std::size_t j, TProfileLayout& layout);

}  // namespace weld
