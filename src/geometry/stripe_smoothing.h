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

// The points of a stripe by their columns.
class TPointsByColumn {
public:
  // The points must outlive it.
  TPointsByColumn(TPointView stripePoints, TMemory* memory);

  // Whether the stripe is cut at these columns within a usual time. Pieces of points that are out of order
  // overlap: with at least 128 for each piece they may hold 2,000,000 points.
  bool canCut(TView<int> columns) const;

  // The points with from < x < to, in order.
  TPoints between(const TColumnRange& columns) const;

private:
  TView<int> find(const TColumnRange& columns) const;

  TPointView points;
  TList<int> byColumn;
  bool doColumnsAscend;
};

}  // namespace weld
