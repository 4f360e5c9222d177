// Moments of points that weigh the less the farther they lie from a curve, in vector code.
#pragma once

namespace weld {

struct TMomentSum {
  double n = 0, x = 0, y = 0, xx = 0, xy = 0, yy = 0;
};

// Every so many of some points.
struct TMomentPoints {
  const double* x = nullptr;
  const double* y = nullptr;
  const double* weight = nullptr;
  int count = 0;
  int step = 1;
};

// y = c0 + c1 t + c2 t^2 + c3 t^3 with t = (x - fromX) * perPx. Tukey's weight of the distance from it: 0 where
// the square of that times perLimit2 is 1 or more.
struct TCubicCurve {
  double fromX, perPx;
  double c0, c1, c2, c3;
  double cosine;  // distance over rows
  double perLimit2;
};

struct TMomentKernels {
  // About an origin.
  TMomentSum (*sumNear)(const TMomentPoints& points, const TCubicCurve& curve, double originX, double originY);
};

}  // namespace weld
