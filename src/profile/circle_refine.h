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

// Covariances of centre and radius over the variance of a centre's distance.
struct TCircleSpread {
  double xx = 0, xy = 0, yy = 0, xr = 0, yr = 0, rr = 0;

  // Of the circle's point in the direction of a unit vector from its centre: mean square of its distance from the
  // true one, which lies in the same direction.
  double at(double nx, double ny) const {
    const double radial = nx * nx * xx + 2.0 * nx * ny * xy + ny * ny * yy + 2.0 * (nx * xr + ny * yr) + rr;
    const double tangential = ny * ny * xx - 2.0 * nx * ny * xy + nx * nx * yy;
    return radial + tangential;
  }
};

struct TCircleFit {
  TCircle circle;
  TCircleSpread spread;
  bool isFound = false;
};

// The circle through a point that touches a line and explains the centres of a span best, beyond the touch point
// by itself and before it by the line: the radius from a grid about a first one. Where an arc meets its plate, a
// larger circle that leaves it earlier looks nearly as good; a refinement alone would stay there.
//   isLeft  the line is on the left of the arc
struct TTouch {
  const TLine& line;
  cv::Point2d through;
  bool isLeft;
  bool isCentreBelow;
};
TCircle searchTouching(const TOrientedCentres& centres, TSpan span, const TTouch& touch, const TCircle& start,
                       double noise2);

// Gauss-Newton on the normal distances with Tukey's weights, from a circle that meets the bonds of its freedom.
//   cutOff  as in fitLocalLines
struct TCircleStart {
  const TCircle& circle;
  const TCircleFreedom& freedom;
};
TCircleFit fitCircle(const TOrientedCentres& centres, TSpan span, const TCircleStart& start, double noise2,
                     double cutOff);

}  // namespace weld
