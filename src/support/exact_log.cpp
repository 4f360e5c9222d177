#include "support/exact_log.h"

#include <cmath>
#include <limits>

namespace weld {

namespace {

constexpr double kLn2High = 6.93147180369123816490e-01;  // 32 bits, so that multiples of it are exact
constexpr double kLn2Low = 1.90821492927058770002e-10;
constexpr double kSqrtHalf = 0.70710678118654752;

}  // namespace

double exactLog(double x) {
  if (std::isnan(x) || x < 0.0) return std::numeric_limits<double>::quiet_NaN();
  if (x == 0.0) return -std::numeric_limits<double>::infinity();
  if (std::isinf(x)) return x;
  int exponent = 0;
  double m = std::frexp(x, &exponent);
  if (m < kSqrtHalf) {
    m *= 2.0;
    --exponent;
  }
  const double s = (m - 1.0) / (m + 1.0);  // log(m) = 2 artanh(s), |s| < 0.172
  const double z = s * s;
  double series = 1.0 / 19.0;
  for (int odd = 17; odd >= 3; odd -= 2) series = series * z + 1.0 / odd;
  return exponent * kLn2High + (exponent * kLn2Low + 2.0 * s * (1.0 + z * series));
}

double exactExp(double x) {
  if (std::isnan(x)) return x;
  if (x > 709.0) return std::numeric_limits<double>::infinity();
  if (x < -708.0) return 0.0;
  const double k = std::nearbyint(x / (kLn2High + kLn2Low));
  const double r = (x - k * kLn2High) - k * kLn2Low;
  double series = 1.0;
  for (int n = 14; n >= 1; --n) series = 1.0 + series * r / n;
  return std::ldexp(series, static_cast<int>(k));
}

}  // namespace weld
