// Smoothing of ridge centres along the stripe. Internal to the ridge extraction.
#pragma once

#include "stripe/ridge/ridge.h"

#include <memory_resource>
#include <vector>

namespace weld {

inline constexpr int kRidgeSmoothing = 3;  // neighbours on either side

// Averages each centre with its neighbours where they differ by no more than the scatter of the centres
// nearby, so that noise shrinks while corners, steps and clean stripes stay; sets the confidence of every
// point from its contrast and that scatter. Columns ascend; a missing column separates.
void smoothRidge(TRidgePoints& points, TMemory* memory);

}  // namespace weld
