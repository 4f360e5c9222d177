// What the default tracker does beyond the plain rules of a joint.
#pragma once

#include "detectors/seam.h"

namespace weld {

// A butt gap. Refused where a flare hides an edge, and where the stripe goes on beside the line on a side of the
// gap: a groove or a bend shows such a hole too. Where gaps of 4 px or less are wanted, a break that is only
// darker than the stripe beside it counts, and a hole of columns without a centre from 5 px on.
TSeam findOwnGap(const TFrame& frame, const TStripe& stripe, const TPrevious& previous);

// A lap, its ends read to a fraction of a column.
TSeam findOwnLap(const TFrame& frame, const TStripe& stripe, const TPrevious& previous);

// A plate, its ends read to a fraction of a column. One that lies flush with its table, on a stripe that is one
// straight line, begins and ends where the light of the stripe changes by a factor of 1.8 or more: between two
// opposite changes; of a single change the position left takes it for the left end, right for the right one.
TSeam findOwnPlate(const TFrame& frame, const TStripe& stripe, const TPrevious& previous);

// A corner. Refused where the flanks cross, but the stripe beside the crossing does not bend as they do.
TSeam findOwnCorner(const TFrame& frame, const TStripe& stripe, const TPrevious& previous);

}  // namespace weld
