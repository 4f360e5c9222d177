// Lines through the part of an element next to one of its ends: real surfaces bow, and a corner is read where it is.
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

struct TLocalLines {
  TLine left;   // next to the left end
  TLine right;  // next to the right end
  TLine whole;
  bool isFound = false;
};

// Working memory for one element, sized for the whole stripe.
using TWindowSums = TList<TMoments::TSums>;

// Tukey-weighted lines; the distance from a blend of the two local lines found before tells the weight.
//   span      centres of the element
//   before    from the round before, or one line thrice
//   noise2    variance of the element's centres about a smooth course, px^2
//   cutOff    distance beyond which a centre counts no more, in standard deviations
//   mostPx    largest window, columns
// Not found with fewer than 5 centres of weight.
TLocalLines fitLocalLines(const TOrientedCentres& centres, TSpan span, const TLocalLines& before, double noise2,
                          double cutOff, double mostPx, TWindowSums& sums);

// Distance of a centre from the blend of both local lines, px; positive below.
class TBlend {
public:
  TBlend(const TLocalLines& l, double leftX, double rightX)
      : lines(l), from(leftX), scale(rightX > leftX ? 1.0 / (rightX - leftX) : 0.0) {}
  double offsetOf(double x, double y) const {
    const double t = std::min(1.0, std::max(0.0, (x - from) * scale));
    return (1.0 - t) * lines.left.offsetOf(x, y) + t * lines.right.offsetOf(x, y);
  }

private:
  const TLocalLines& lines;
  double from;
  double scale;
};

}  // namespace weld
