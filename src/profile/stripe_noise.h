// Scatter of the stripe's centres about a smooth course.
#pragma once

#include "profile/clean_runs.h"

namespace weld {

// Standard deviation of the normal distance, px, at least 0.25. The median over stretches of 8 centres; raised, at
// most 2.5 times, to the lower quartile over stretches of 40: coarse speckle looks small over 8.
double measureNoise(const TCentres& centres, const TMoments& moments, std::pmr::memory_resource* memory);

}  // namespace weld
