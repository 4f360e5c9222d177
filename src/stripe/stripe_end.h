// Where a straight piece of the stripe ends, to a fraction of a column.
#pragma once

#include "stripe/stripe.h"
#include "support/line_math.h"
#include "trace/frame.h"

namespace weld {

// The piece that an end belongs to, as far as it is known.
struct TEndOfPiece {
  TPointView piece;  // its centres, x ascending, at least one
  bool isRight = false;
  double widthPx = 0.0;  // of the stripe; 0: not known
  int reachPx = 20;      // columns beyond the last centre that may still be lit
  int freePx = 20;       // of these, columns without another piece: only there may the piece have holes
  double apartPx = 1.0;  // usual columns to the first lit one of the piece beside it
  int edgePx = 6;        // columns up to the last centre that may be lit by something else already
};

// The line through the centres next to the end, at most 300; a level one through the last where they are too few.
TSlopeLine lineAtEnd(const TFrame& frame, const TEndOfPiece& end);

// The centre of the last column that is lit, on that line. The light of the columns tells it:
// a column counts by its share of the light inside, so that an edge which falls within a
// column, or which the lens has blurred, is read between two. The last centre where the piece is too dim or too
// short to be measured.
struct TLitEnd {
  cv::Point2d pos;
  bool isSharp = false;  // half of the light ends within two columns: no flare does
};
TLitEnd endOfLight(const TFrame& frame, const TEndOfPiece& end);
// The same on a line that lineAtEnd() gave.
TLitEnd endOfLight(const TFrame& frame, const TEndOfPiece& end, const TSlopeLine& line);

}  // namespace weld
