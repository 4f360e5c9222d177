// What else the stripe of a seam may be.
#pragma once

#include "detectors/seam.h"
#include "profile/profile_engine.h"

namespace weld {

// Of the joints that stand out of a plate and a curve, best first: why the stripe shows another one than that
// asked for at its place, as a static text; null where nothing speaks against it.
using TRivalTest = const char* (*)(TView<TRankedJoint> ranked, const TSeam& seam);

// A gap leaves a plate with a hole; every other joint that stands out is what the stripe shows.
const char* rivalOfGap(TView<TRankedJoint> ranked, const TSeam& seam);
// A lap stands out itself, more than any other joint, and where it was found.
const char* rivalOfLap(TView<TRankedJoint> ranked, const TSeam& seam);
// The same for a corner; a groove has corners too.
const char* rivalOfCorner(TView<TRankedJoint> ranked, const TSeam& seam);
// One groove often passes for another: to ask for these is to measure. A joint that is none must be clearly
// better.
const char* rivalOfGroove(TView<TRankedJoint> ranked, const TSeam& seam);

// Compares the joints on the stripe that a seam was found on; for one that the light along the stripe tells, on
// its longest piece. About as much work as a first detection of all grooves.
bool isShownBy(const TFrame& frame, const TSeam& seam, const TStripe& stripe, TRivalTest rivalOf);

}  // namespace weld
