// Tests that several detectors make.
#pragma once

#include "trace/trace.h"

namespace weld {

inline constexpr TCheck kStripePoints =
    countCheck({4, TWeldOutcome::noStripe, "stripe", "too few stripe points"}, "stripe points", TRule::atLeast);
inline constexpr TCheck kEnoughPieces = countCheck(
    {12, TWeldOutcome::elementMissing, "pieces", "too few straight pieces"}, "straight pieces", TRule::atLeast);

}  // namespace weld
