// Scatter of the stripe's centres about a smooth course.
#pragma once

#include "profile/clean_runs.h"

namespace weld {

struct TStripeNoise {
  double sigmaPx = 0.25;
  // Variance of the mean of many centres over what it would be if each erred for itself: 1 for white noise, more
  // where speckle makes neighbours err alike. From the second differences of the means of blocks.
  double inflation = 1.0;
};

// Sigma: standard deviation of the normal distance, px, at least 0.25. The median over stretches of 8 centres;
// raised, at most 2.5 times, to the lower quartile over stretches of 40: coarse speckle looks small over 8.
TStripeNoise measureNoise(const TCentres& centres, const TMoments& moments, std::pmr::memory_resource* memory);

}  // namespace weld
