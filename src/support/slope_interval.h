// The slopes that a line may have.
#pragma once

#include <optional>

namespace zelFit {

class TSlopeInterval {
public:
  // Every slope.
  static TSlopeInterval all();

  // The slopes whose angle, degrees of atan(slope), lies in centreDeg +- halfRangeDeg modulo 180, borders
  // included. The borders are the tangents of the border angles, exact to 1e-15 of their value. The vertical has
  // no slope: an interval around it holds steep slopes of both signs. Nothing for a negative or undefined half
  // range or an undefined or infinite centre.
  static std::optional<TSlopeInterval> around(double centreDeg, double halfRangeDeg);

  bool contains(double slope) const;

  // The slope itself where the interval holds it, else the nearer border.
  double clamp(double slope) const;

private:
  TSlopeInterval(double lowSlope, double highSlope) : low(lowSlope), high(highSlope) {}

  double low;  // above `high` when the interval holds the vertical: from low up to it, and on up to high
  double high;
};

}  // namespace zelFit
