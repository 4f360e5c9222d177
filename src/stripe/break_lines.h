// The dark line that a tight joint draws in the light beside the stripe.
#pragma once

#include "support/list.h"

namespace weld {

// How dark the darkest straight line through each column of a stripe is beside it, above and below, in scatters.
//   grey         8-bit, one channel
//   firstColumn  of the stripe
//   rows         of the stripe from there on, column by column
//   widthPx      of the stripe
TList<double> findLines(const cv::Mat& grey, int firstColumn, TView<double> rows, double widthPx, TMemory* memory);

}  // namespace weld
