// Butt gap: one straight stripe broken by a gap.
#pragma once

#include "detectors/seam.h"

namespace weld {

// The widest interruption along the one line through the stripe. Not found: isFound false with the stripe
// points of the frame.
TSeam findGap(const TFrame& frame, const TStripe& stripe, const TPrevious& previous);

// Where a gap lies: the last column of the line left of it and the first one right of it.
struct TLineHole {
  double slope = 0.0;
  double intercept = 0.0;
  int leftX = 0;
  int rightX = 0;
};

// The same, and the hole of a seam that was found.
TSeam findGapAt(const TFrame& frame, const TStripe& stripe, const TPrevious& previous, TLineHole& hole);

}  // namespace weld
