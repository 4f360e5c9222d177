// Functions whose last bit differs between C libraries, built from exactly rounded operations only, so that
// a frame has the same bytes everywhere.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>

namespace scenes {

struct TSinCos {
  double sin = 0.0;
  double cos = 1.0;
};

// |deg| <= 360.
inline TSinCos sinCosDeg(double deg) {
  const double x = deg * (3.141592653589793 / 180.0);
  TSinCos sum{0.0, 0.0};
  double term = 1.0;
  for (int n = 1; n <= 40; ++n) {
    const double sign = (n - 1) % 4 < 2 ? 1.0 : -1.0;
    (n % 2 == 1 ? sum.cos : sum.sin) += sign * term;
    term *= x / n;
  }
  return sum;
}

// |deg| < 90.
inline double tanDeg(double deg) {
  const TSinCos v = sinCosDeg(deg);
  return v.sin / v.cos;
}

// Angle of the direction (dx, dy), dx > 0, in -90..90: turned back step by step by the arc sine's first terms.
inline double directionDeg(double dx, double dy) {
  constexpr double kDegPerRad = 180.0 / 3.141592653589793;
  constexpr int kSteps = 8;  // the error falls with its fifth power
  const double length = std::sqrt(dx * dx + dy * dy);
  double deg = 0.0;
  for (int i = 0; i < kSteps; ++i) {
    const TSinCos turn = sinCosDeg(deg);
    const double rest = (dy * turn.cos - dx * turn.sin) / length;
    deg += kDegPerRad * rest * (1.0 + rest * rest / 6.0);
  }
  return deg;
}

inline constexpr float kFadedOut = 14.0F;  // 2^-14 of the brightest ridge is below half a grey level

// 2^-u for u >= 0; 0 from kFadedOut on.
inline float halve(float u) {
  constexpr int kPerUnit = 64;
  constexpr std::size_t kCount = static_cast<std::size_t>(kFadedOut) * kPerUnit + 2;
  static const std::array<float, kCount> table = [] {
    constexpr double kStep = 0.98922801319397548;  // 2^(-1/64)
    std::array<float, kCount> values{};
    double value = 1.0;
    for (float& v : values) {
      v = static_cast<float>(value);
      value *= kStep;
    }
    return values;
  }();
  if (!(u < kFadedOut)) return 0.0F;
  const float position = u * kPerUnit;
  const auto i = static_cast<std::size_t>(position);
  return table[i] + (table[i + 1] - table[i]) * (position - static_cast<float>(i));
}

}  // namespace scenes
