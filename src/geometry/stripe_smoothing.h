// Cleaning of the ordered stripe points before they are cut into pieces.
#pragma once

#include "support/list.h"
#include "trace/frame.h"

namespace weld {

// Keeps the first point and every point whose rise against its predecessor in the input is below
// slopeFactor * its step in x. Fewer than 2 points stay as they are.
TPoints dropSteepJumps(TPointView points, float slopeFactor, TMemory* memory);

// Averages x and y over the six points i - 3 .. i + 2; the first 3 and the last 2 points stay. Fewer than 4 points
// stay as they are, 4 to 6 points come out empty.
TPoints smoothStripe(TPointView points, TMemory* memory);

// The stripe as it gets cut: without steep jumps, smoothed. Empty when a point is not finite or absurdly far away.
TPoints cleanStripe(const TFrame& frame, TPointView points);

struct TColumnRange {
  int from = 0;
  int to = 0;
};

// The points with from < x < to, in order. Faster with points that are known to be sorted by column.
TPoints pointsBetween(TPointView points, const TColumnRange& columns, bool doColumnsAscend, TMemory* memory);

}  // namespace weld
