// What the prescribed arithmetic makes of a perfectly extracted stripe: no detector can be nearer than this.
#pragma once

#include "seam_trial.h"

#include <optional>

namespace accuracy {

// Distance from the truth of the seam that follows from the true centres, rounded to whole rows, px. Nothing for a
// joint whose arithmetic sets no floor of its own.
//   lap, plate  the true end of the piece, moved to the steepest brightness drop along the true line
//   corner      the lines through the smoothed and truncated points of the two longest pieces: how tracking fits
//               them; a first detection fits the centres themselves and comes nearer
std::optional<double> floorOf(const TSeamCase& trial, const scenes::TScene& scene);

}  // namespace accuracy
