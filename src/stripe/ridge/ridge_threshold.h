// How much contrast a ridge needs to stand out of its surroundings. Internal to the ridge extraction.
#pragma once

#include "stripe/ridge/ridge_response.h"

#include <memory_resource>
#include <vector>

namespace weld {

// Least response of a ridge per column of the level, grey levels times kRidgeUnit: six sigmas of the response
// nearby, which noise and texture spread alike, but at least a quarter of minContrast (grey levels) and at most
// four times as much.
std::pmr::vector<short> chooseRidgeThresholds(const TRidgeLevel& level, int halfRows, double minContrast,
                                              std::pmr::memory_resource* memory);

}  // namespace weld
