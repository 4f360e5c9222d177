// Holes of a stripe that may be a butt gap, and what speaks against one.
#pragma once

#include "detectors/gap.h"
#include "profile/flares.h"

#include <optional>

namespace weld {

// The centres between the edges of a hole.
TPointView pointsIn(TPointView points, const TLineHole& hole);

// Columns of the widest step between neighbouring centres of the line, but that of the hole.
int nextWidth(TPointView points, const TLineHole& hole, double tolerancePx);

// A hole that may be the gap, as wide as the dark on the line: where something dimmer than the stripe shines out
// of a gap, its centres are none of the line's. Nothing where stripe or light go on through the hole or beside its
// line, or where a flare hides an edge.
//   flares  that the stripe leaves out
std::optional<TLineHole> openHole(const TFrame& frame, const TStripe& stripe, TView<TFlare> flares,
                                  const TLineHole& hole);

// What was said of a hole.
struct TAskedHole {
  TLineHole hole;
  std::optional<TLineHole> open;
};

// All of a line that are not too narrow.
//   line   a hole of it
//   asked  one that is not asked again
TList<TLineHole> openHoles(const TFrame& frame, const TStripe& stripe, TView<TFlare> flares, const TLineHole& line,
                           const TAskedHole& asked);

}  // namespace weld
