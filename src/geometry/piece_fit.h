// The line of one straight piece of the stripe.
#pragma once

#include "geometry/piece.h"

namespace weld {

inline constexpr float kPieceFitTolPx = 3.0F;  // distance tolerance of every piece fit

// A piece through the points: robust line, inliers within fitTolPx, residuals, ends rounded to whole pixels.
// Fewer than 10 points, or no line: a piece that holds the points and nothing else.
TPiece fitPiece(TPoints points, float fitTolPx, TMemory* memory);

// Adds points to a piece in two steps. The first leaves an outline, what a merge asks of a piece: its ends and
// that it is fitted, where that is sure without the fit, otherwise the points alone. Either way the second
// completes it.
void absorbPiece(TPointView points, float fitTolPx, TPiece& piece, TMemory* memory);
void completePiece(float fitTolPx, TPiece& piece, TMemory* memory);

// Distance between the two ends of a piece, px.
double pieceLength(const TPiece& piece);

// Angle of a piece, degrees: taken in single precision and widened.
double pieceAngleDeg(const TPiece& piece);

// The points of one piece followed by those of the other.
TPoints joinPoints(TPointView first, TPointView second, TMemory* memory);

}  // namespace weld
