// Cuts the stripe into few straight atoms; the borders between them are where a profile may change its element.
#pragma once

#include "profile/clean_runs.h"

namespace weld {

inline constexpr int kMostAtoms = 18;

// Borders of the atoms as indices of centres, ascending: atom k reaches from border k to border k + 1. Empty for
// fewer than two centres. Blocks of 8 columns (wider where the stripe has more than 1,280), none across a break,
// are merged greedily by the rise of the squared distances from their lines over the variance of the noise;
// corners, steps and bends are what remains.
//   noisePx  > 0
TList<int> cutAtoms(const TCentres& centres, const TMoments& moments, double noisePx,
                    std::pmr::memory_resource* memory);

}  // namespace weld
