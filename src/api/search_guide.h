// The guide of the next search: the previous stripe, with room to grow.
#pragma once

#include "trace/frame.h"

namespace weld {

// The points of the stripe, in column order, and a straight continuation of its end pieces with one point per
// column, so that the search regions begin and end marginPx beyond the stripe; every point inside the image. A
// stripe too short to make two regions is continued at both ends until it does: one region alone would cut it off.
// Where the image has no room for that, or the stripe fewer than 10 points, the guide is empty: search the whole
// image.
//   stripe  points inside the image, any order.
TPoints extendGuide(const TFrame& frame, TPointView stripe, int marginPx);

}  // namespace weld
