// From the candidates of a frame to the centres of its stripe.
#pragma once

#include "stripe/edge_pairs/region_scan.h"
#include "trace/frame.h"

namespace weld {

struct TReducedStripe {
  TPoints centres;            // one per column, left to right
  double modalWidthPx = 0.0;  // most frequent width; 0 when fewer than 10 columns have a candidate
};

// Keeps the candidates about as wide as most are, follows the stripe through them and drops short pieces
// between jumps. Fewer than 10 columns with a candidate, before or after the width test, give no centres. Sorts
// the candidates and drops those of other widths.
TReducedStripe reduceStripeCandidates(const TFrame& frame, TList<TStripeCandidate>& candidates);

// Drops the pieces between jumps that span 10 px or less in x. A jump is a step in y of more than 4 times
// the step in x. Fewer than 10 centres are left as they are.
TPoints dropShortPieces(TPoints centres);

}  // namespace weld
