// A break of the stripe too narrow for columns without a centre: a tight butt joint.
#pragma once

#include "stripe/stripe.h"
#include "trace/frame.h"

namespace weld {

struct TDarkBreak {
  double x = 0.0;       // px
  int firstColumn = 0;  // of the dark ones
  int columns = 0;      // 1..3
  double score = 0.0;
  double line = 0.0;  // how dark the line beside the stripe is, in scatters
};

// The places where the stripe is darker than on either side for 1 to 3 columns, the highest score first, a few.
// Speckle is dark too: the score adds the step of the centres across the break and the dark line that the joint
// draws in the light beside the stripe.
//   stripe  centres inside the image, x ascending; its pieces of 40 columns or more count.
TList<TDarkBreak> findDarkBreaks(const TFrame& frame, const TStripe& stripe);

// Whether the first place is a break by this frame alone: not where the score is low, where another place comes
// near it, or where the line is missing.
bool isDarkBreak(const TTrace& trace, TView<TDarkBreak> places);

}  // namespace weld
