// Where an element ends: crossings, the last stripe seen, rounded corners.
#include "profile/profile_layout.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kLeastSine = 0.05;
constexpr double kInlierSigmas = 3.5;
constexpr double kShortHolePx = 5.0;  // columns
constexpr int kNeededBehindHole = 7;  // centres
constexpr int kNeededWhereSearched = 3;
constexpr double kFarthestHolePx = 60.0;
constexpr double kLeastFilletPx = 4.0;  // radius
constexpr double kFilletGain = 6.0;     // by which a rounded corner must be cheaper than a sharp one
constexpr int kFilletSteps = 5;
constexpr double kFilletSearchPx = 1.5;  // scatter that the search allows for
constexpr double kFilletCutOff = 6.0;

}  // namespace

std::optional<cv::Point2d> crossingOf(const TLine& a, const TLine& b) {
  const double sine = a.dx * b.dy - a.dy * b.dx;
  if (std::abs(sine) < kLeastSine) return std::nullopt;
  const double along = ((b.x - a.x) * b.dy - (b.y - a.y) * b.dx) / sine;
  return cv::Point2d(a.x + along * a.dx, a.y + along * a.dy);
}

std::optional<cv::Point2d> meetingOf(const TLine& line, const TCircle& circle, cv::Point2d guess) {
  const double offset = line.offsetOf(circle.x, circle.y);
  const double half2 = circle.r * circle.r - offset * offset;
  if (half2 < -0.5 * circle.r * circle.r) return std::nullopt;
  const double along = line.alongOf(circle.x, circle.y);
  const double half = half2 > 0.0 ? std::sqrt(half2) : 0.0;
  const double at = line.alongOf(guess.x, guess.y) < along ? along - half : along + half;
  return cv::Point2d(line.x + at * line.dx, line.y + at * line.dy);
}

int walkToEnd(const TOrientedCentres& centres, const TFittedElement& element, const TElementRange& range,
              const TWalk& walk) {
  const auto [from, limit, step, bow] = walk;
  const double bowPx = bow * (element.right.x - element.left.x);
  const double tolPx = kInlierSigmas * std::sqrt(element.noise2) + bowPx;
  const TSurface surface(element, range);
  int end = from;
  int waiting = 0;  // centres behind a hole, not yet believed
  for (int i = from + step; i != limit + step && i >= 0 && i < centres.count(); i += step) {
    const cv::Point2d p = centres.at(i);
    const double holePx = std::abs(p.x - centres.at(end).x);
    if (holePx > kFarthestHolePx + kNeededBehindHole) break;
    if (std::abs(surface.offsetOf(p)) > tolPx) {
      waiting = 0;
      continue;
    }
    ++waiting;
    const bool isSearched = i >= element.searched.first && i < element.searched.last;
    const int needed = isSearched ? kNeededWhereSearched : kNeededBehindHole;
    if (holePx > kShortHolePx + waiting && waiting < needed) continue;
    end = i;
    waiting = 0;
  }
  return end;
}

namespace {

// A corner between two lines.
struct TCorner {
  const TLine& a;
  const TLine& b;
  cv::Point2d at;
  bool isCentreBelow;
  double perRadius;  // from the corner to the tangent points
  double mostR;      // that leaves something of the lines
};

std::optional<TCorner> cornerBetween(const TFittedElement& left, const TFittedElement& right) {
  const TLine& a = left.lines.right;
  const TLine& b = right.lines.left;
  const std::optional<cv::Point2d> at = crossingOf(a, b);
  if (!at) return std::nullopt;
  const double sine = a.dx * b.dy - a.dy * b.dx;
  const double perRadius = (1.0 - a.dx * b.dx - a.dy * b.dy) / std::abs(sine);
  const double leftPx = (at->x - left.left.x) * a.dx + (at->y - left.left.y) * a.dy;
  const double rightPx = (right.right.x - at->x) * b.dx + (right.right.y - at->y) * b.dy;
  return TCorner{a, b, *at, sine > 0.0, perRadius, 0.9 * std::min(leftPx, rightPx) / std::max(perRadius, 1e-3)};
}

// Bounded cost of some centres by their distances.
template <typename TOffset>
double costOver(const TOrientedCentres& centres, int first, int last, double noise2, const TOffset& offsetOf) {
  double cost = 0.0;
  for (int i = first; i < last; ++i) {
    const double offset = offsetOf(centres.at(i));
    const double square = offset * offset;
    cost += 4.0 * square / (square + 8.0 * noise2);
  }
  return cost;
}

// Of the centres about a corner, rounded or not.
double cornerCost(const TOrientedCentres& centres, TSpan span, const TCorner& corner, double r, double noise2) {
  const std::optional<TCircle> circle =
      r > 0.0 ? touching(r, corner.a, corner.b, corner.isCentreBelow) : std::nullopt;
  const double tangentPx = circle ? corner.perRadius * r : 0.0;
  const auto borderAt = [&](double x) { return std::clamp(centres.indexOf(x), span.first, span.last); };
  const int from = borderAt(corner.at.x - tangentPx * corner.a.dx);
  const int to = std::max(from, borderAt(corner.at.x + tangentPx * corner.b.dx));
  const auto offLeft = [&](cv::Point2d p) { return corner.a.offsetOf(p.x, p.y); };
  const auto offRight = [&](cv::Point2d p) { return corner.b.offsetOf(p.x, p.y); };
  double cost =
      costOver(centres, span.first, from, noise2, offLeft) + costOver(centres, to, span.last, noise2, offRight);
  if (circle) {
    const TFillet fillet{*circle, corner.isCentreBelow};
    cost += costOver(centres, from, to, noise2, [&](cv::Point2d p) { return fillet.offsetOf(p); });
  }
  return cost;
}

// Cheapest radius: a grid, then thirds of the best interval.
double searchRadius(const TOrientedCentres& centres, TSpan span, const TCorner& corner, double noise2) {
  const auto costOf = [&](double r) { return cornerCost(centres, span, corner, r, noise2); };
  const double ratio = std::max(1.15, std::sqrt(std::sqrt(std::sqrt(corner.mostR / kLeastFilletPx))));
  double best = kLeastFilletPx;
  double least = costOf(best);
  double r = kLeastFilletPx * ratio;
  while (r <= corner.mostR) {
    const double cost = costOf(r);
    if (cost < least) least = cost, best = r;
    r *= ratio;
  }
  double low = best / ratio;
  double high = std::min(corner.mostR, best * ratio);
  for (int step = 0; step < kFilletSteps; ++step) {
    const double third = (high - low) / 3.0;
    const bool isLower = costOf(low + third) < costOf(high - third);
    (isLower ? high : low) += isLower ? -third : third;
  }
  return 0.5 * (low + high);
}

}  // namespace

TCircleFit findFillet(const TOrientedCentres& centres, const TFittedElement& left, const TFittedElement& right,
                      double noise2) {
  TCircleFit fillet;
  const std::optional<TCorner> corner = cornerBetween(left, right);
  if (!corner || !(corner->mostR > kLeastFilletPx)) return fillet;
  const double reachPx = corner->perRadius * corner->mostR;
  const TSpan span{std::max(left.span.first, centres.indexOf(corner->at.x - reachPx * corner->a.dx)),
                   std::min(right.span.last, centres.indexOf(corner->at.x + reachPx * corner->b.dx))};
  const double search2 = std::max(noise2, kFilletSearchPx * kFilletSearchPx);
  const double r = searchRadius(centres, span, *corner, search2);
  const std::optional<TCircle> circle = touching(r, corner->a, corner->b, corner->isCentreBelow);
  const double sharp = cornerCost(centres, span, *corner, 0.0, noise2);
  if (!circle || cornerCost(centres, span, *corner, r, noise2) > sharp - kFilletGain) return fillet;
  const double tangentPx = corner->perRadius * r;
  const TSpan rounded{centres.indexOf(corner->at.x - tangentPx * corner->a.dx),
                      centres.indexOf(corner->at.x + tangentPx * corner->b.dx)};
  const TCircleFreedom freedom = circleBetween(corner->a, corner->b, corner->isCentreBelow);
  fillet = fitCircle(centres, rounded, {*circle, freedom}, noise2, kFilletCutOff);
  if (!fillet.isFound || fillet.circle.r > corner->mostR) fillet.circle = *circle;
  fillet.isFound = true;
  return fillet;
}

}  // namespace weld
