// Lines through the part of an element next to one of its ends: real surfaces bow, and a corner is read where it
// is.
#pragma once

#include "profile/moments.h"

#include <algorithm>

namespace weld {

// Centres in the sense of the profile: turned over where it opens downwards.
struct TOrientedCentres {
  TView<double> x;  // ascending
  TView<double> y;
  TView<double> weight;

  int count() const { return static_cast<int>(x.size()); }
  cv::Point2d at(int i) const { return {x[static_cast<std::size_t>(i)], y[static_cast<std::size_t>(i)]}; }
  // Index of the first centre not to the left of the column.
  int indexOf(double column) const;
};

// How a line is fitted.
struct TLocalFitSettings {
  double noise2 = 1.0;   // variance of the element's centres about a smooth course, px^2
  double cutOff = 4.7;   // distance beyond which a centre counts no more, in standard deviations
  double mostPx = 1e9;   // largest window, columns
  bool isRough = false;  // only the whole line, from a hundred of the centres
};

struct TLocalLines {
  TLine left;   // next to the left end
  TLine right;  // next to the right end
  TLine whole;
  bool isFound = false;
};

// Tukey-weighted lines; the distance from a blend of the two local lines found before tells the weight.
//   span      centres of the element
//   before    from the round before, or one line thrice
// Not found with fewer than 3 centres of weight.
TLocalLines fitLocalLines(const TOrientedCentres& centres, TSpan span, const TLocalLines& before,
                          const TLocalFitSettings& settings);

// The surface between its two local lines: a cubic that has both at its ends, and the lines beyond them. A
// straight surface is straight, an evenly bowed one is met exactly.
class TBlend {
public:
  TBlend(const TLocalLines& lines, double leftX, double rightX);

  // Distance of a centre, px; positive below.
  double offsetOf(double x, double y) const {
    const double t = (x - from) * scale;
    if (t <= 0.0) return left.offsetOf(x, y);
    if (t >= 1.0) return right.offsetOf(x, y);
    return (y - (c0 + t * (c1 + t * (c2 + t * c3)))) * cosine;
  }

  // The cubic, with Tukey's weight of what lies nearer than the limit.
  TCubicCurve curve(double limit2) const { return {from, scale, c0, c1, c2, c3, cosine, 1.0 / limit2}; }

private:
  const TLine& left;
  const TLine& right;
  double from;
  double scale;
  double c0, c1, c2, c3;
  double cosine;
};

}  // namespace weld
