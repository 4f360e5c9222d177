// Angles with the same bits on every processor: the C library picks other code for other instruction sets.
#pragma once

namespace weld {

inline constexpr double kDegPerRad = 180.0 / 3.141592653589793;

// atan(x) in radians, within 1 unit in the last place; NaN for NaN.
double arcTangent(double x);

// Direction of (x, y) in radians, -pi..pi; 0 for the zero vector, NaN when a coordinate is NaN.
double arcTangent2(double y, double x);

// Angle of a slope, degrees.
inline double slopeToDeg(double k) {
  return arcTangent(k) * kDegPerRad;
}

}  // namespace weld
