// Where a flank ends by its light. Beside a steep or a closed root the stripe is so thick along the columns that
// its centres stop short of the end, and leave a hole that looks like a root gap.
#pragma once

#include "profile/profile_layout.h"
#include "trace/frame.h"

namespace weld {

// Whether the flanks are lit up to the corners that they make with a flat root. A backing behind a root gap may
// lie where such a root would; the dark of the gap tells it.
bool areFeetLit(const TFrame& frame, const TProfileLayout& layout);

// Moves the ends of flanks at a root or a wall on along their lines for as long as the image is at least half as
// bright there as on the flank itself, and no centres tell that the light is another surface's. An end that lies
// on such a surface, which crosses the line behind a hole, goes back to the hole; one that bends steeper without a
// break ends with its last centre.
//   centres  in the sense of the layout
void extendToLight(const TFrame& frame, const TOrientedCentres& centres, TProfileLayout& layout);

}  // namespace weld
