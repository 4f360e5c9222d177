// Least squares through points that come one by one.
#pragma once

namespace weld {

class TParabola {
public:
  void add(double t, double y) {
    s0 += 1.0;
    s1 += t;
    s2 += t * t;
    s3 += t * t * t;
    s4 += t * t * t * t;
    y0 += y;
    y1 += t * y;
    y2 += t * t * y;
  }
  double count() const { return s0; }

  // Of fewer points, or too close ones, the straight line through them; of one place its mean.
  double at(double t, double leastForCurve) const {
    const double a = s0 * s2 - s1 * s1;
    const double det = s4 * a - s3 * (s0 * s3 - s1 * s2) + s2 * (s1 * s3 - s2 * s2);
    if (s0 < leastForCurve || det < 1e-4 * s0 * s0 * s0) {
      if (a <= 1e-6) return s0 > 0.0 ? y0 / s0 : 0.0;
      return (y0 * s2 - y1 * s1 + t * (s0 * y1 - s1 * y0)) / a;
    }
    const double c0 = y0 * (s2 * s4 - s3 * s3) - y1 * (s1 * s4 - s2 * s3) + y2 * (s1 * s3 - s2 * s2);
    const double c1 = s0 * (y1 * s4 - y2 * s3) - s1 * (y0 * s4 - y2 * s2) + s2 * (y0 * s3 - y1 * s2);
    const double c2 = s0 * (s2 * y2 - s3 * y1) - s1 * (s1 * y2 - s3 * y0) + s2 * (s1 * y1 - s2 * y0);
    return (c0 + t * (c1 + t * c2)) / det;
  }

private:
  double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0, s4 = 0.0, y0 = 0.0, y1 = 0.0, y2 = 0.0;
};

}  // namespace weld
