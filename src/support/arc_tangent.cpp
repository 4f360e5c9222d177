// Argument reduction to |x| < 7/16 at the breakpoints 0.5, 1, 1.5 and infinity, then an odd minimax polynomial:
// the method and coefficients of the freely distributable maths library of Sun Microsystems, 1993 (s_atan.c).
#include "support/arc_tangent.h"

#include <cmath>

namespace weld {

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kPiLow = 1.2246467991473532e-16;  // pi - kPi

struct TReduced {
  double x;          // reduced argument
  double offset;     // atan of the breakpoint
  double offsetLow;  // what the offset lacks of it
};

TReduced reduce(double x) {
  if (x < 0.4375) return {x, 0.0, 0.0};
  if (x < 0.6875) return {(2.0 * x - 1.0) / (2.0 + x), 4.63647609000806093515e-01, 2.26987774529616870924e-17};
  if (x < 1.1875) return {(x - 1.0) / (x + 1.0), 7.85398163397448278999e-01, 3.06161699786838301793e-17};
  if (x < 2.4375) return {(x - 1.5) / (1.0 + 1.5 * x), 9.82793723247329054082e-01, 1.39033110312309984516e-17};
  return {-1.0 / x, 1.57079632679489655800e+00, 6.12323399573676603587e-17};
}

// x - atan(x) for |x| < 7/16.
double defect(double x) {
  const double z = x * x;
  const double w = z * z;
  const double odd = z * (3.33333333333329318027e-01 +
                          w * (1.42857142725034663711e-01 +
                               w * (9.09088713343650656196e-02 +
                                    w * (6.66107313738753120669e-02 +
                                         w * (4.97687799461593236017e-02 + w * 1.62858201153657823623e-02)))));
  const double even = w * (-1.99999999998764832476e-01 +
                           w * (-1.11111104054623557880e-01 +
                                w * (-7.69187620504482999495e-02 +
                                     w * (-5.83357013379057348645e-02 + w * -3.65315727442169155270e-02))));
  return x * (odd + even);
}

}  // namespace

double arcTangent(double x) {
  if (std::isnan(x)) return x;
  const TReduced r = reduce(std::abs(x));
  const double angle = r.offset - ((defect(r.x) - r.offsetLow) - r.x);
  return std::copysign(angle, x);
}

double arcTangent2(double y, double x) {
  if (std::isnan(x) || std::isnan(y)) return x + y;
  if (y == 0.0) return std::signbit(x) && x != 0.0 ? std::copysign(kPi, y) : y;
  const double angle = arcTangent(std::abs(y / x));
  const double upper = x < 0.0 ? kPi - (angle - kPiLow) : angle;
  return std::copysign(upper, y);
}

}  // namespace weld
