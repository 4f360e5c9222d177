#include "profile/flank_bow.h"

#include "support/normal_equations.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kTukey = 4.7;
constexpr int kFewestCentres = 30;
constexpr double kAlike = 3.0;         // neighbours that scatter as one
constexpr double kLeastRoundPx = 3.0;  // of a corner, left out
constexpr double kRoundPerWidth = 0.5;
constexpr double kMostScatter = 1.5;    // about the bow, over that about a smooth course
constexpr double kMostBowShare = 0.03;  // of the length: more is a kink

// Centres of a flank along and off its line: u runs from -1 to 1.
class TBowedFlank {
public:
  TBowedFlank(const TOrientedCentres& c, TSpan s, const TFittedElement& f)
      : centres(c), span(s), flank(f), line(f.lines.whole) {
    const double from = line.alongOf(flank.left.x, flank.left.y);
    const double to = line.alongOf(flank.right.x, flank.right.y);
    middle = 0.5 * (from + to);
    half = std::max(0.5 * (to - from), 1.0);
  }

  // False where it is no even bow.
  bool fit() {
    TNormalEquations bowed(3);
    const double invLimit2 = 1.0 / (kTukey * kTukey * std::max(flank.noise2, line.variance));
    TSums sums;
    TTriple offs{};
    double squares = 0.0;
    for (int i = span.first; i < span.last; ++i) {
      const cv::Point2d p = centres.at(i);
      const double u = (line.alongOf(p.x, p.y) - middle) / half;
      const double off = line.offsetOf(p.x, p.y);
      const double share = std::max(0.0, 1.0 - off * off * invLimit2);
      const double w = centres.weight[static_cast<std::size_t>(i)] * share * share;
      bowed.add({1.0, u, u * u}, off, w);
      squares += w * off * off;
      offs = {offs[0] + w * off, offs[1] + w * u * off, offs[2] + w * u * u * off};
      sums.u += w * u;
      sums.uu += w * u * u;
      sums.uuu += w * u * u * u;
    }
    sums.n = bowed.weight();
    if (sums.n < kFewestCentres || !bowed.factor()) return false;
    course = bowed.solution();
    const double explained = course[0] * offs[0] + course[1] * offs[1] + course[2] * offs[2];
    const double scatter = std::max(squares - explained, 0.0) / sums.n;
    if (scatter > kMostScatter * flank.noise2 || std::abs(course[2]) > kMostBowShare * half) return false;
    shrink(kAlike * scatter * bowed.covariances(2)[2], sums);
    return true;
  }

  // The line next to an end.
  TLine at(double u, const TLine& before) const {
    const double slope = (course[1] + 2.0 * course[2] * u) / half;
    const double length = std::sqrt(1.0 + slope * slope);
    TLine turned = before;
    turned.dx = (line.dx - slope * line.dy) / length;
    turned.dy = (line.dy + slope * line.dx) / length;
    const double off = course[0] + (course[1] + course[2] * u) * u;
    const double along = middle + u * half;
    const cv::Point2d end(line.x + along * line.dx - off * line.dy, line.y + along * line.dy + off * line.dx);
    // Its point stays beside the centroid, from which its scatter is told.
    const double back = turned.alongOf(before.x, before.y) - turned.alongOf(end.x, end.y);
    turned.x = end.x + back * turned.dx;
    turned.y = end.y + back * turned.dy;
    return turned;
  }

private:
  struct TSums {
    double n = 0.0, u = 0.0, uu = 0.0, uuu = 0.0;
  };

  // To the share of the bow that the scatter does not explain; the line between its ends follows.
  void shrink(double variance, const TSums& s) {
    const double bow2 = course[2] * course[2];
    const double lost = bow2 > 0.0 ? std::min(1.0, variance / bow2) * course[2] : 0.0;
    // Least squares of what is lost by a line.
    const double spread = s.n * s.uu - s.u * s.u;
    const double slope = (s.n * s.uuu - s.u * s.uu) / spread;
    course[2] -= lost;
    course[1] += lost * slope;
    course[0] += lost * (s.uu - slope * s.u) / s.n;
  }

  const TOrientedCentres& centres;
  TSpan span;
  const TFittedElement& flank;
  const TLine& line;
  double middle = 0.0;
  double half = 1.0;
  TTriple course{};
};

// Without the rounded ends.
TSpan straightOf(const TOrientedCentres& centres, double stripeWidthPx, const TFittedElement& flank) {
  const double roundPx =
      std::max(kLeastRoundPx, kRoundPerWidth * stripeWidthPx) * std::max(0.3, flank.lines.whole.dx);
  return {std::max(flank.span.first, centres.indexOf(flank.left.x + roundPx)),
          std::min(flank.span.last, centres.indexOf(flank.right.x - roundPx))};
}

}  // namespace

void followBows(const TOrientedCentres& centres, double stripeWidthPx, TProfileLayout& layout) {
  for (std::size_t e = 0; e < layout.count(); ++e) {
    TFittedElement& flank = layout.elements[e];
    const bool isFlank = layout.range(e).kind == TElementKind::line && layout.range(e).role == TElementRole::flank;
    if (!isFlank) continue;
    TBowedFlank bowed(centres, straightOf(centres, stripeWidthPx, flank), flank);
    if (!bowed.fit()) continue;
    flank.lines.left = bowed.at(-1.0, flank.lines.left);
    flank.lines.right = bowed.at(1.0, flank.lines.right);
  }
}

}  // namespace weld
