// From the candidates of a frame to the centres of its stripe.
#pragma once

#include "stripe/region_scan.h"
#include "support/trace.h"

#include <vector>

namespace weld {

struct TReducedStripe {
  TLentList<cv::Point2f> centres;  // one per column, left to right
  double modalWidthPx = 0.0;       // most frequent width; 0 when fewer than 10 columns have a candidate
};

// Keeps the candidates about as wide as most are, follows the stripe through them and drops short pieces
// between jumps. Fewer than 10 columns with a candidate, before or after the width test, give no centres. Sorts
// the candidates and drops those of other widths.
TReducedStripe reduceStripeCandidates(std::vector<TStripeCandidate>& candidates, TStripeScratch& scratch,
                                      const TTrace& trace = {});

// Drops the pieces between jumps that span 10 px or less in x. A jump is a step in y of more than 4 times
// the step in x. Fewer than 10 centres are left as they are.
TLentList<cv::Point2f> dropShortPieces(TLentList<cv::Point2f> centres);

}  // namespace weld
