// Circles that fit their centres best, free or bound to the lines beside them.
#pragma once

#include "profile/local_fit.h"

#include <array>
#include <optional>

namespace weld {

// How a circle may change: each parameter moves its centre and its radius.
struct TCircleFreedom {
  struct TDirection {
    double x, y, r;
  };
  std::array<TDirection, 3> directions{};
  std::size_t count = 0;
};

TCircleFreedom freeCircle();
// Stays tangent to a line, its centre on the side of +-(-dy, dx).
TCircleFreedom circleOnLine(const TLine& line, bool isCentreBelow);
// The circle of radius 0 tangent to both is their crossing.
TCircleFreedom circleBetween(const TLine& left, const TLine& right, bool isCentreBelow);

// The same circle moved so that it touches.
TCircle touching(const TCircle& circle, const TLine& line, bool isCentreBelow);
std::optional<TCircle> touching(double r, const TLine& left, const TLine& right, bool isCentreBelow);

struct TCircleFit {
  TCircle circle;
  double radiusSigma = 0.0;  // of the radius over that of a centre's distance
  double centreSigma = 0.0;  // the same of the centre, along its worst axis
  bool isFound = false;
};

// Gauss-Newton on the normal distances with Tukey's weights.
//   start   meets the bonds of the freedom
//   cutOff  as in fitLocalLines
TCircleFit fitCircle(const TOrientedCentres& centres, TSpan span, const TCircle& start,
                     const TCircleFreedom& freedom, double noise2, double cutOff);

}  // namespace weld
