// The piece of a stripe that holds most of it.
#pragma once

#include "support/list.h"

#include <cmath>
#include <cstddef>

namespace weld {

// The most centres in a row that lie at most 12 columns and less than 8 rows from the one before; of equally many
// the first.
//   points  x ascending
inline TPointView longestPiece(TPointView points) {
  std::size_t bestBegin = 0;
  std::size_t bestEnd = 0;
  std::size_t begin = 0;
  for (std::size_t i = 1; i <= points.size(); ++i) {
    const bool goesOn = i < points.size() && points[i].x - points[i - 1].x <= 12.0F &&
                        std::abs(points[i].y - points[i - 1].y) < 8.0F;
    if (goesOn) continue;
    if (i - begin > bestEnd - bestBegin) {
      bestBegin = begin;
      bestEnd = i;
    }
    begin = i;
  }
  return points.part(bestBegin, bestEnd - bestBegin);
}

}  // namespace weld
