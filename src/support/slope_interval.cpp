#include "support/slope_interval.h"

#include "support/arc_tangent.h"

#include <cmath>
#include <limits>

namespace zelFit {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kTurnDeg = 180.0;  // a line turned by this is the same line
constexpr int kLambertDepth = 17;   // denominators 1, 3, ..., 17: all bits up to 45 degrees

// Lambert's continued fraction (Memoires de l'Academie de Berlin, 1761), so that a border has the same bits on
// every processor. 0..45 degrees.
double tangentOfSmall(double deg) {
  const double x = deg / weld::kDegPerRad;
  double denominator = kLambertDepth;
  for (int odd = kLambertDepth - 2; odd >= 1; odd -= 2) denominator = odd - x * x / denominator;
  return x / denominator;
}

// -90..90 degrees; the ends give infinity.
double tangent(double deg) {
  const double magnitude = std::abs(deg);
  const double value = magnitude <= 45.0 ? tangentOfSmall(magnitude) : 1.0 / tangentOfSmall(90.0 - magnitude);
  return std::copysign(value, deg);
}

}  // namespace

TSlopeInterval TSlopeInterval::all() {
  return {-kInfinity, kInfinity};
}

std::optional<TSlopeInterval> TSlopeInterval::around(double centreDeg, double halfRangeDeg) {
  if (!std::isfinite(centreDeg) || !(halfRangeDeg >= 0.0)) return std::nullopt;
  if (halfRangeDeg >= kTurnDeg / 2.0) return all();
  return TSlopeInterval(tangent(std::remainder(centreDeg - halfRangeDeg, kTurnDeg)),
                        tangent(std::remainder(centreDeg + halfRangeDeg, kTurnDeg)));
}

bool TSlopeInterval::contains(double slope) const {
  return low <= high ? low <= slope && slope <= high : slope >= low || slope <= high;
}

double TSlopeInterval::clamp(double slope) const {
  if (contains(slope)) return slope;
  if (low <= high) return slope < low ? low : high;
  return slope - high < low - slope ? high : low;
}

}  // namespace zelFit
