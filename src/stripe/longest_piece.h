// The piece of a stripe that holds most of it.
#pragma once

#include "support/list.h"

#include <cmath>
#include <cstddef>

namespace weld {

// The most points in a row of which each goes on from the one before; of equally many the first.
//   goesOn  of a point and the next one
template <typename TTest>
TPointView longestRun(TPointView points, const TTest& goesOn) {
  std::size_t bestBegin = 0;
  std::size_t bestEnd = 0;
  std::size_t begin = 0;
  for (std::size_t i = 1; i <= points.size(); ++i) {
    if (i < points.size() && goesOn(points[i - 1], points[i])) continue;
    if (i - begin > bestEnd - bestBegin) {
      bestBegin = begin;
      bestEnd = i;
    }
    begin = i;
  }
  return points.part(bestBegin, bestEnd - bestBegin);
}

// At most 12 columns and less than 8 rows from one centre to the next.
inline bool isNextOfPiece(cv::Point2f a, cv::Point2f b) {
  return b.x - a.x <= 12.0F && std::abs(b.y - a.y) < 8.0F;
}

//   points  x ascending
inline TPointView longestPiece(TPointView points) {
  return longestRun(points, isNextOfPiece);
}

// The piece that begins with the first point; empty of none.
inline TPointView firstPiece(TPointView points) {
  std::size_t count = points.empty() ? 0 : 1;
  while (count > 0 && count < points.size() && isNextOfPiece(points[count - 1], points[count])) ++count;
  return points.part(0, count);
}

}  // namespace weld
