// Edge pairs or ridges? When the ridges are asked, and what is made of both.
#pragma once

#include "stripe/centres.h"
#include "support/trace.h"

namespace weld {

// True when edge pairs leave stripe behind that ridges may follow: columns with a pair that is no centre (flare
// thicker than the rest, a short rest between two breaks), or fewer than minColumns centres (thin, thick, soft or
// dim).
bool leavesStripeUnexplained(const TStripeCentres& edgePairs, int minColumns);

// Both extractions of the same regions in one. The ridges alone where they follow the stripe through clearly more
// columns; else the edge pairs, with ridge centres in those columns whose pairs were dropped: where there is no
// pair, a ridge would run on into a gap.
TStripeCentres chooseStripe(TStripeCentres edgePairs, TStripeCentres ridges, const TTrace& trace = {},
                            TScratch* scratch = nullptr);

}  // namespace weld
