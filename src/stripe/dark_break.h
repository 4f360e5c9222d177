// A break of the stripe too narrow for columns without a centre: a tight butt joint.
#pragma once

#include "stripe/stripe.h"
#include "trace/frame.h"

#include <optional>

namespace weld {

struct TDarkBreak {
  double x = 0.0;        // px
  int firstColumn = 0;   // of the dark ones
  int columns = 0;       // 1..3
  bool isClear = false;  // ahead of any other place by far
};

// The break where the stripe is darker than on either side for 1 to 3 columns. Speckle is dark too: the score adds
// the step of the centres across the break and the dark line that the joint draws in the light beside the stripe.
// None where the score is low, where another place comes near it, or where the line is missing.
//   stripe  centres inside the image, x ascending; its longest piece counts, of 80 columns or more.
std::optional<TDarkBreak> findDarkBreak(const TFrame& frame, const TStripe& stripe);

}  // namespace weld
