// Centres that something darker than the stripe gave: what shines out of a gap.
#pragma once

#include "stripe/stripe.h"
#include "trace/frame.h"

#include <optional>

namespace weld {

// The stripe without runs of 8 and more centres near its course that have less than 0.4 of the light of the stripe
// on either side. Nothing where there are none. Runs beyond 15 rows of the course stay: they are flanks.
//   stripe  centres inside the image, x ascending
std::optional<TStripe> withoutDimRuns(const TFrame& frame, const TStripe& stripe);

}  // namespace weld
