// The middle of a list.
#pragma once

#include "support/list.h"

#include <algorithm>
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

}  // namespace weld
