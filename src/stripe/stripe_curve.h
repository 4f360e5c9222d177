// A line or a flat curve through centres of the stripe, to a fraction of a row.
#pragma once

#include "support/list.h"

#include <optional>

namespace weld {

// y = a + k dx + c dx^2, dx = x - originX.
struct TStripeCurve {
  double originX = 0.0;
  double a = 0.0;
  double k = 0.0;
  double c = 0.0;
  double noisePx = 0.0;  // root mean square of the centres about it
  double lengthPx = 0.0;
  double beyondPx = 0.0;  // from these to the origin
  double count = 0.0;     // of these centres
  double stepPx = 1.0;    // from one to the next where none is missing

  double rowAt(double x) const {
    const double dx = x - originX;
    return a + (k + c * dx) * dx;
  }
  double slopeAt(double x) const { return k + 2.0 * c * (x - originX); }
  // Standard deviation of its row at the origin, that lies at an end of the centres or beyond it.
  double sigmaAtOrigin() const;
};

// The line through most of the centres, least squares; nothing where fewer than 10
// or none but one column are left.
std::optional<TStripeCurve> fitStripeLine(TPointView points, double originX, TMemory* memory);

// The same, but bent where the centres show a bow that their scatter does not explain.
std::optional<TStripeCurve> fitStripeCurve(TPointView points, double originX, TMemory* memory);

}  // namespace weld
