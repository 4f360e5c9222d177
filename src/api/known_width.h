// Two ends of a seam that lie as far apart in frame after frame.
#pragma once

#include "stripe/break_path.h"

#include <optional>

namespace weld {

struct TEndColumns {
  double left = 0.0;  // px
  double right = 0.0;
  bool areKnown = true;  // false: neither lies where the frames before had it, and not as far from the other one
};

// The ends that several frames before showed.
std::optional<TEndColumns> knownEnds(const TBreakPlaces& places);

// The ends as far apart as several frames before showed them: of two that are not, the one that lies where it did
// tells the other.
//   seen    in this frame
//   places  middle and width of ends in the frames before; afterwards with those of this one
TEndColumns keepWidth(const TEndColumns& seen, TBreakPlaces& places);

}  // namespace weld
