// Whether centres form a stripe: noise, spatter and texture leave scraps.
#pragma once

#include "stripe/stripe.h"
#include "trace/frame.h"

namespace weld {

inline constexpr double kLeastExtent = 0.125;  // of the image's columns: what is seen on fewer is a scrap

// Columns of the piece that a centre lies in, on average over all centres. A piece goes on over holes of up to 27
// columns where it comes out on its own line.
//   points  x ascending; 0 without any
double meanPieceColumns(TPointView points);

// Of a stripe the pieces are a tenth of the image long on average, or, of a short one, half as long as all of it.
bool isWholeStripe(const TFrame& frame, TPointView points);

}  // namespace weld
