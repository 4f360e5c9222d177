// Chooses one candidate per column so that the chosen ones follow the stripe.
#pragma once

#include "stripe/edge_pairs/region_scan.h"

namespace weld {

// The centres of the stripe, left to right, at most one per column. The candidates must be in column order.
//
// A run takes one candidate from each of several neighbouring columns, with steps below 50 px in y; columns
// without a candidate do not count. The longest run of all, the smoothest one among equally long ones (smallest
// sum of squared steps; then the leftmost, then the uppermost), is the stripe. The columns on either side of it
// are treated in the same way. Runs of 30 columns or less are dropped.
TPoints selectStripeRuns(TView<TStripeCandidate> candidates, TMemory* memory);

}  // namespace weld
