// The stripe as a polygon of few vertices.
#pragma once

#include "support/list.h"

namespace weld {

// Vertices of an open polygon within epsilonPx of the points (Douglas and Peucker, The Canadian Cartographer 10,
// 1973), rounded to the nearest pixel, less those nearly on the line of their neighbours. Bit for bit those of
// cv::approxPolyDP, which takes its memory anew every time. The points must be finite. Empty when there is no
// point or epsilonPx is outside 0 .. 1e9; a stretch whose ends coincide counts as straight.
TList<cv::Point> approximatePolygon(TPointView points, double epsilonPx, TMemory* memory);

}  // namespace weld
