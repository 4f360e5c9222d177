// By how much a stripe turns.
#pragma once

#include "stripe/stripe.h"

#include <optional>

namespace weld {

// Between the lines through the centres on either side of a column, degrees, >= 0. Nothing where a side has fewer
// than 10 of them.
//   points  x ascending
//   reachPx columns on either side that count
std::optional<double> turnAt(TPointView points, float x, float reachPx);

// Share of all centres that go on along the line through those about a column, 0..1.
double straightShare(TPointView points, float x, float reachPx);

}  // namespace weld
