// How well a layout explains every centre of the stripe.
#pragma once

#include "profile/profile_layout.h"

namespace weld {

struct TLayoutScore {
  double cost = 0.0;
  double worstShare = 1.0;  // of the centres that belong to it, at the end of an element where that is least
  std::array<double, kMostElements> shares{};  // the lesser of both ends
};

// Bounded cost of every centre about its element, that of what no element covers, and a penalty for each
// parameter: comparable between templates on one stripe.
//   noisePx  of the stripe
TLayoutScore scoreLayout(const TOrientedCentres& centres, const TProfileLayout& layout, double noisePx);

}  // namespace weld
