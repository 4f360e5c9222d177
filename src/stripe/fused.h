// Edge pairs and ridges: when the ridges are asked, and what is made of both.
#pragma once

#include "stripe/ridge/ridge_stripe.h"
#include "stripe/stripe.h"
#include "trace/frame.h"

namespace weld {

// True when edge pairs leave stripe behind that ridges may follow: columns of the span with a pair that is no
// centre (flare thicker than the rest, a short rest between two breaks), or fewer than minColumns centres in all
// (thin, thick, soft or dim).
bool leavesStripeUnexplained(const TStripe& edgePairs, int minColumns, const TColumnSpan& span = {});

// To replace edge pairs, ridges must follow the stripe through more than so many times the columns.
inline constexpr double kClearlyMore = 1.2;

// Both extractions of the same regions in one. Where they see the stripe apart, the one that goes on from the
// columns beside. Holes of the edge pairs are filled where the ridge bridges them from side to side, and where
// their pairs were dropped: elsewhere a ridge would run on into a gap. The status of filled columns is that of
// found ones.
TStripe fillUp(const TFrame& frame, TStripe edgePairs, const TStripe& ridges);

// The same, or the ridges alone where they follow the stripe through clearly more columns than edge pairs explain.
TStripe fuse(const TFrame& frame, TStripe edgePairs, TStripe ridges);

}  // namespace weld
