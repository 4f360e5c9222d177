// Where the grey levels have the stripe: centres of edge pairs are whole rows, and lie a little above it.
#pragma once

#include "profile/profile_layout.h"
#include "trace/frame.h"

namespace weld {

// Moves every line and arc of a layout up or down, and turns its lines, by what the middle of the light lies off
// them in columns where their centres are, as far as that stands out of its scatter; ends and rounded corners
// follow. What fewer than 12 columns show stays.
void moveToLight(const TFrame& frame, const TOrientedCentres& centres, TProfileLayout& layout);

}  // namespace weld
