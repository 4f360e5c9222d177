// Where the grey levels have the stripe: centres of edge pairs are whole rows, and lie a little above it.
#pragma once

#include "profile/profile_layout.h"
#include "trace/frame.h"

namespace weld {

// Moves every line and arc of a layout up or down by what the middle of the light lies off it, on the mean of
// columns where its centres are; the ends go with it. Where too few columns show a stripe on its own it stays.
void moveToLight(const TFrame& frame, const TOrientedCentres& centres, TProfileLayout& layout);

}  // namespace weld
