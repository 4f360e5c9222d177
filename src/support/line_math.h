// Arithmetic of lines y = k * x + b in image pixels, and the conversions of points to integers.
// Every other file uses these; none repeats them.
#pragma once

#include <opencv2/core.hpp>

#include <cmath>
#include <limits>

namespace weld {

inline constexpr double kMinDivisor = 1e-5;

// A divisor kept away from zero: +-1e-5 with the sign kept, zero counting as positive.
inline double guardDivisor(double divisor) {
  if (std::abs(divisor) >= kMinDivisor) return divisor;
  return divisor < 0.0 ? -kMinDivisor : kMinDivisor;
}

// Distance of (x, y) from the line, px.
inline double pointLineDistance(double k, double b, double x, double y) {
  return std::abs(k * x - y + b) / std::sqrt(k * k + 1.0);
}

// Tells for one point after the other whether pointLineDistance is below a tolerance, to the bit, without a root
// and a division for each: the largest offset that still counts is found once.
class TNearLine {
public:
  TNearLine(double slope, double intercept, double tolerancePx)
      : k(slope),
        b(intercept),
        tolPx(tolerancePx),
        isUsual(tolPx > 1e-100 && tolPx < 1e100 && std::abs(k) < 1e100) {
    if (!isUsual) return;
    const double perPx = std::sqrt(k * k + 1.0);
    most = tolPx * perPx;
    while (most / perPx < tolPx) most = std::nextafter(most, HUGE_VAL);
    while (!(most / perPx < tolPx)) most = std::nextafter(most, 0.0);
  }

  bool operator()(double x, double y) const {
    return isUsual ? std::abs(k * x - y + b) <= most : pointLineDistance(k, b, x, y) < tolPx;
  }

private:
  double k;
  double b;
  double tolPx;
  double most = 0.0;
  bool isUsual;
};

// True when the value has a 32-bit integer next to it; false for NaN.
inline bool fitsInt(double value) {
  return value > -2147483649.0 && value < 2147483648.0;
}

// y = k * x + b.
struct TSlopeLine {
  double k = 0.0;
  double b = 0.0;
};

// Where two lines meet; slopeStep is the slope of the second less that of the first, as exact as the caller has
// it.
inline cv::Point2f crossingOf(const TSlopeLine& first, const TSlopeLine& second, double slopeStep) {
  const double x = (first.b - second.b) / guardDivisor(slopeStep);
  return {static_cast<float>(x), static_cast<float>(first.k * x + first.b)};
}

// Truncation toward zero. Values without a 32-bit integer, NaN among them, give the smallest one, so that
// a wild coordinate is outside every image.
inline int truncToInt(double value) {
  return fitsInt(value) ? static_cast<int>(value) : std::numeric_limits<int>::min();
}

// The same without a branch, for loops over points.
inline int truncToInt(float value) {
  constexpr float kEnd = 2147483648.0F;
  return static_cast<int>(value >= -kEnd && value < kEnd ? value : -kEnd);
}

// Nearest integer, ties to even; out of range as in truncToInt. A double beyond 2^52 has no fraction, so that the
// sum rounds; not every processor has an instruction that does.
inline int roundToInt(double value) {
  constexpr double kNoFraction = 6755399441055744.0;  // 1.5 * 2^52
  const double rounded = (value + kNoFraction) - kNoFraction;
  return fitsInt(rounded) ? static_cast<int>(rounded) : std::numeric_limits<int>::min();
}

// Height of the apex over the chord, px, in single precision.
inline float heightOverChord(cv::Point2f from, cv::Point2f to, cv::Point2f apex) {
  const float doubleArea =
      std::abs(from.x * (apex.y - to.y) + apex.x * (to.y - from.y) + to.x * (from.y - apex.y));
  const cv::Point2f chord = to - from;
  const float length = std::sqrt(chord.x * chord.x + chord.y * chord.y);
  return doubleArea / static_cast<float>(guardDivisor(static_cast<double>(length)));
}

inline cv::Point truncPoint(cv::Point2f p) {
  return {truncToInt(p.x), truncToInt(p.y)};
}
inline cv::Point roundPoint(cv::Point2f p) {
  return {roundToInt(p.x), roundToInt(p.y)};
}

}  // namespace weld
