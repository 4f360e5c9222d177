// The middle of a list, and how its values scatter about it.
#pragma once

#include "support/list.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace weld {

// Of an even number the upper one of the middle two. Leaves the values in another order.
//   values  not empty, no NaN
template <typename TNumber>
TNumber medianOf(TList<TNumber>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// Standard deviation of values of which fewer than half are outliers: 1.4826 x their median distance from the
// median.
//   values  not empty, no NaN; left as they are
//   work    for the distances
template <typename TNumber>
double scatterOf(const TList<TNumber>& values, TList<TNumber>& work) {
  work.assign(values.begin(), values.end());
  const TNumber median = medianOf(work);
  for (TNumber& v : work) v = std::abs(v - median);
  return 1.4826 * medianOf(work);
}

}  // namespace weld
