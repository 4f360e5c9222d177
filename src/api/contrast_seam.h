// A seam found by its contrast, for the tracker: alone, or beside the laser stripe.
#pragma once

#include "detectors/seam.h"
#include "zelWeldTracker.h"

namespace weld {

// The seam point on the line of this frame: near the last line, else in the whole image.
//   last  whose stripePts are the last line; not found: the whole image at once
TSeam findContrastSeam(const TFrame& frame, const TTrackerOptions& options, const TPrevious& last);

// Moves a seam that was looked for in the stripe along it to where the contrast line crosses it; finds it there
// where the stripe's rules have not. Not found where both contradict each other.
void joinContrast(const TFrame& frame, const TTrackerOptions& options, TSeam& seam);

}  // namespace weld
