// Holes of a stripe that may be a butt gap, and what speaks against one.
#pragma once

#include "detectors/gap.h"
#include "profile/flares.h"

namespace weld {

// The centres between the edges of a hole.
TPointView pointsIn(TPointView points, const TLineHole& hole);

// The steps between neighbouring centres of a line that are wider than from column to column.
//   line  a hole of it
TList<TLineHole> holesOf(const TFrame& frame, TPointView points, const TLineHole& line);

// Columns of the widest step between neighbouring centres of the line, but that of the hole.
int nextWidth(TPointView points, const TLineHole& hole, double tolerancePx);

// The hole as wide as the dark on the line beside it: where something dimmer than the stripe shines out of a gap,
// its centres are none of the line's.
TLineHole widened(const TFrame& frame, const TStripe& stripe, const TLineHole& hole);

// Whether no flare lies in a hole: the edge under it may be anywhere.
//   flares  that the stripe leaves out
bool isInSight(const TFrame& frame, TView<TFlare> flares, const TLineHole& hole);

// Whether stripe and light end at the hole: not where they go on through it or beside its line.
bool isHole(const TFrame& frame, const TStripe& stripe, const TLineHole& hole);

}  // namespace weld
