// Lines and circles through any stretch of the stripe's centres in constant time, from prefix sums of moments.
#pragma once

#include "stripe/stripe.h"
#include "support/kernels/weighted_moments.h"

#include <cstddef>
#include <optional>

namespace weld {

// Stretch of a list of centres: first <= i < last.
struct TSpan {
  int first = 0;
  int last = 0;

  int count() const { return last - first; }
};

// Straight line through its centroid. The direction is a unit vector with dx >= 0; upright lines point to +y.
struct TLine {
  double x = 0.0;
  double y = 0.0;
  double dx = 1.0;
  double dy = 0.0;
  double variance = 0.0;  // mean square of the normal distances, px^2
  double spread = 0.0;    // sum of the squared positions along the line about the centroid, px^2
  double weight = 0.0;    // sum of the weights

  // Signed normal distance, px; positive below a level line (y points down).
  double offsetOf(double px, double py) const { return (py - y) * dx - (px - x) * dy; }
  double alongOf(double px, double py) const { return (px - x) * dx + (py - y) * dy; }
};

struct TCircle {
  double x = 0.0;
  double y = 0.0;
  double r = 0.0;
  double variance = 0.0;  // mean square of the distances from the arc, first order, px^2
  double weight = 0.0;
};

// Total least squares; variance 0 for two points. A single point gives a level line through it.
//   sums  about the origin
TLine lineOf(const TMomentSum& sums, cv::Point2d origin);
// Of that line alone.
double varianceOf(const TMomentSum& sums);

// Weighted centres of a stripe and the sums over every leading stretch of them. Coordinates are taken about the
// middle of the stripe: raw pixel sums would cost the small circles accuracy.
class TMoments {
public:
  // xs ascending; all lists of one length, finite; weights > 0.
  TMoments(TView<double> xs, TView<double> ys, TView<double> weights, std::pmr::memory_resource* memory);

  // Sums of a stretch, or of several joined ones.
  struct TSums : TMomentSum {
    double xz = 0, yz = 0, zz = 0;  // z is the square of the distance from the origin
    TSums& operator+=(const TSums& other);
    TSums& operator-=(const TSums& other);
  };
  TSums sumsOf(TSpan span) const;

  TLine lineOf(const TMomentSum& sums) const { return weld::lineOf(sums, {originX, originY}); }
  TLine lineOf(TSpan span) const { return lineOf(sumsOf(span)); }
  // Sum of the squared normal distances of that line, px^2.
  double residualOf(TSpan span) const;

  // Taubin, "Estimation of planar curves, surfaces and nonplanar space curves defined by implicit equations", PAMI
  // 1991, by Newton's method. Nothing for fewer than three points, points on a line, or a radius above 1e5 px.
  std::optional<TCircle> circleOf(const TSums& sums) const;
  std::optional<TCircle> circleOf(TSpan span) const { return circleOf(sumsOf(span)); }

private:
  double originX = 0.0;
  double originY = 0.0;
  TList<TSums> prefix;  // one more than points
};

}  // namespace weld
