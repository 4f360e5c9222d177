// Plate: the highest straight piece of the stripe and its two ends.
#pragma once

#include "detectors/seam.h"
#include "geometry/piece.h"

namespace weld {

// The seam between the two ends, with the line through them. Not found: the empty seam.
TSeam findPlate(const TFrame& frame, const TStripe& stripe, const TPrevious& previous);

// The seam of one piece: corners at its ends, width, line through the corners.
TSeam computePlateSeam(const TFrame& frame, const TPiece& piece);

// Whether both ends of a found plate have support: an end without it is a marker outside the image.
bool havePlateEndsSupport(const TSeam& plate);

// Counts a successful frame. With the application switch "NeedPrintPlateWeldInfo" on, every 21st one shows a
// message.
//   frames         successful ones since the last message.
//   stripeWidthPx  most frequent stripe width of the frame.
void showPlateInfo(int& frames, const TSeam& plate, double stripeWidthPx);

}  // namespace weld
