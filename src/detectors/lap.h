// Lap: two straight pieces displaced in height.
#pragma once

#include "detectors/seam.h"
#include "geometry/piece.h"

#include <optional>
#include <utility>

namespace weld {

// The step between the facing ends of two pieces. Not found: the empty seam.
TSeam findLap(const TFrame& frame, const TStripe& stripe, const TPrevious& previous);

struct TLapPieces {
  TPiece left;
  TPiece right;
};

// The same, and the pieces that it lies between, where there are two.
TSeam findLapBetween(const TFrame& frame, const TStripe& stripe, std::optional<TLapPieces>& pieces);

// The two pieces of a lap: nearly collinear touching neighbours are joined first; of more than two the ones with
// the most inliers. Nothing when fewer than two are left. The order is not yet left to right.
std::optional<std::pair<TPiece, TPiece>> selectLapPieces(const TFrame& frame, TPieces pieces);

// The seam of a left and a right piece, with every acceptance test.
TSeam computeLapSeam(const TFrame& frame, const TPiece& left, const TPiece& right, TPointView stripePts);

}  // namespace weld
