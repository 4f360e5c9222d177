// Which part of a course is the seam: runs of stations that show it, joined over those that do not.
#pragma once

#include "support/list.h"

#include <cstdint>

namespace weld {

struct TStretch {
  int begin = 0;
  int end = 0;  // one past the last station
};

// The chain of runs with most stations, less what is bridged. Runs are joined where one goes on as the other ends:
// behind a tack weld the seam does, a path that has left the seam for a scratch does not.
//   places    px across, one per station
//   measured  not 0: the station shows the seam; set to 0 where a run in between does not belong to the chain
TStretch findStretch(const TList<float>& places, TList<std::uint8_t>& measured, TMemory* memory);

}  // namespace weld
