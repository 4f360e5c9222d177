// Where a piece of the stripe ends that runs into a flare.
#pragma once

#include "profile/flares.h"
#include "stripe/stripe_end.h"

namespace weld {

// The flare that a piece runs into, also where the stripe has no centres under it: the line of the piece goes on
// through its white.
//   line  of the piece at its end
std::optional<TFlare> flareBeyond(const TFrame& frame, const TEndOfPiece& end, const TSlopeLine& line);

// The column of that end, px: where its light ends at once, as no flare does; next to the end of the stripe that
// goes on beside the piece's line beyond the flare, where the flare leaves that one in sight; else nothing.
//   points  centres of the stripe, x ascending
//   end     without the centres that the flare hides
std::optional<double> endUnderFlare(const TFrame& frame, const TFlare& flare, TPointView points,
                                    const TEndOfPiece& end);

}  // namespace weld
