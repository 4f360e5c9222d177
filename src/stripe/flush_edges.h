// Where a plate begins and ends that lies flush with its table: one straight stripe that changes its brightness.
#pragma once

#include "stripe/stripe.h"
#include "trace/frame.h"

namespace weld {

struct TLightStep {
  double x = 0.0;       // px
  double change = 0.0;  // logarithm of the stripe's light right of the step over that left of it
};

// The steps of the light along the stripe, left to right: those by a factor of 1.8 or more that stand out of the
// speckle, at least 60 px apart; by 1.3 or more where the room light on both sides steps by 1.4. Empty where the
// stripe is not one straight line.
//   stripe  centres inside the image, x ascending
TList<TLightStep> findLightSteps(const TFrame& frame, const TStripe& stripe);

// The centres of such a straight stripe without those of glare beside it.
//   points  at least one
TPoints onStraightLine(TPointView points, TMemory* memory);

}  // namespace weld
