// Where the grey levels have the stripe: centres of edge pairs are whole rows, and lie a little above it.
#pragma once

#include "support/line_math.h"
#include "trace/frame.h"

namespace weld {

// A centre of a ridge is to a fraction of a row already.
inline bool isFine(double row) {
  return row != truncToInt(row);
}

// Row of the middle of the light in the column of a centre. Not a number where there is no stripe on its own, next
// to the upper and lower edge of the image and outside of it.
double lightMiddle(const cv::Mat& image, cv::Point2d centre);

// The middle of the light at centres of a stripe, without those that do not tell it; the centres themselves where
// that leaves half of them or less.
//   step  of the centres every so many are looked at, the first among them; at least 1
TPoints onLight(const TFrame& frame, TPointView centres, std::size_t step);

}  // namespace weld
