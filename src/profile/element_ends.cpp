// Where an element ends: crossings, the last stripe seen, rounded corners.
#include "profile/profile_layout.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kLeastSine = 0.05;
constexpr double kInlierSigmas = 3.5;
constexpr double kBowPerLength = 0.002;
constexpr double kShortHolePx = 5.0;   // columns
constexpr int kNeededBehindHole = 7;   // centres
constexpr int kNeededWhereSearched = 3;
constexpr double kFarthestHolePx = 60.0;
constexpr double kLeastFilletPx = 4.0;  // radius
constexpr double kFilletGain = 6.0;     // by which a rounded corner must be cheaper than a sharp one
constexpr int kFilletSteps = 5;
constexpr double kFilletSearchPx = 1.5;  // scatter that the search allows for
constexpr double kFilletCutOff = 6.0;

}  // namespace

double offsetFrom(const TFittedElement& element, const TElementRange& range, cv::Point2d p) {
  if (range.kind == TElementKind::line) {
    return TBlend(element.lines, element.left.x, element.right.x).offsetOf(p.x, p.y);
  }
  const TCircle& c = element.arc.circle;
  const double distance = std::sqrt((p.x - c.x) * (p.x - c.x) + (p.y - c.y) * (p.y - c.y));
  return range.isCentreBelow ? c.r - distance : distance - c.r;
}

std::optional<cv::Point2d> crossingOf(const TLine& a, const TLine& b) {
  const double sine = a.dx * b.dy - a.dy * b.dx;
  if (std::abs(sine) < kLeastSine) return std::nullopt;
  const double along = ((b.x - a.x) * b.dy - (b.y - a.y) * b.dx) / sine;
  return cv::Point2d(a.x + along * a.dx, a.y + along * a.dy);
}

int walkToEnd(const TOrientedCentres& centres, const TFittedElement& element, const TElementRange& range, int from,
              int limit, int step) {
  const double bowPx = kBowPerLength * (element.right.x - element.left.x);
  const double tolPx = kInlierSigmas * std::sqrt(element.noise2) + bowPx;
  int end = from;
  int waiting = 0;  // centres behind a hole, not yet believed
  for (int i = from + step; i != limit + step && i >= 0 && i < centres.count(); i += step) {
    const cv::Point2d p = centres.at(i);
    const double holePx = std::abs(p.x - centres.at(end).x);
    if (holePx > kFarthestHolePx + kNeededBehindHole) break;
    if (std::abs(offsetFrom(element, range, p)) > tolPx) {
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

// Mean bounded cost of the centres about the corner.
double cornerCost(const TOrientedCentres& centres, TSpan span, const TLine& a, const TLine& b,
                  const std::optional<TCircle>& circle, double cornerX, double noise2) {
  double fromX = cornerX;
  double toX = cornerX;
  if (circle) {
    fromX = circle->x - a.offsetOf(circle->x, circle->y) * -a.dy;  // foot of the centre on the line
    toX = circle->x - b.offsetOf(circle->x, circle->y) * -b.dy;
  }
  double cost = 0.0;
  for (int i = span.first; i < span.last; ++i) {
    const cv::Point2d p = centres.at(i);
    double offset = 0.0;
    if (p.x < fromX) {
      offset = a.offsetOf(p.x, p.y);
    } else if (p.x > toX) {
      offset = b.offsetOf(p.x, p.y);
    } else if (circle) {
      const double dx = p.x - circle->x;
      const double dy = p.y - circle->y;
      offset = std::sqrt(dx * dx + dy * dy) - circle->r;
    }
    const double t = offset * offset / (8.0 * noise2);
    cost += 8.0 * t / (1.0 + t);
  }
  return 0.5 * cost;
}

}  // namespace

TCircleFit findFillet(const TOrientedCentres& centres, const TFittedElement& left, const TFittedElement& right,
                      double noise2) {
  TCircleFit fillet;
  const TLine& a = left.lines.right;
  const TLine& b = right.lines.left;
  const std::optional<cv::Point2d> corner = crossingOf(a, b);
  if (!corner) return fillet;
  const bool isCentreBelow = a.dx * b.dy - a.dy * b.dx > 0.0;
  const double cosine = a.dx * b.dx + a.dy * b.dy;
  const double sine = std::abs(a.dx * b.dy - a.dy * b.dx);
  const double perRadius = (1.0 - cosine) / sine;  // from the corner to the tangent points, per radius
  const cv::Point2d start = left.left;
  const cv::Point2d end = right.right;
  const double leftPx = (corner->x - start.x) * a.dx + (corner->y - start.y) * a.dy;
  const double rightPx = (end.x - corner->x) * b.dx + (end.y - corner->y) * b.dy;
  const double mostR = 0.9 * std::min(leftPx, rightPx) / std::max(perRadius, 1e-3);
  if (!(mostR > kLeastFilletPx)) return fillet;
  const TSpan span{left.span.first, right.span.last};
  const double search2 = std::max(noise2, kFilletSearchPx * kFilletSearchPx);
  const auto costOf = [&](double r) {
    return cornerCost(centres, span, a, b, touching(r, a, b, isCentreBelow), corner->x, search2);
  };
  const double ratio = std::max(1.15, std::sqrt(std::sqrt(std::sqrt(mostR / kLeastFilletPx))));
  double best = kLeastFilletPx;
  double least = costOf(best);
  for (double r = kLeastFilletPx * ratio; r <= mostR; r *= ratio) {
    const double cost = costOf(r);
    if (cost < least) least = cost, best = r;
  }
  double low = best / ratio;
  double high = std::min(mostR, best * ratio);
  for (int step = 0; step < kFilletSteps; ++step) {
    const double third = (high - low) / 3.0;
    const bool isLower = costOf(low + third) < costOf(high - third);
    (isLower ? high : low) += isLower ? -third : third;
  }
  const double r = 0.5 * (low + high);
  const std::optional<TCircle> circle = touching(r, a, b, isCentreBelow);
  const double sharp = cornerCost(centres, span, a, b, std::nullopt, corner->x, noise2);
  if (!circle || cornerCost(centres, span, a, b, circle, corner->x, noise2) > sharp - kFilletGain) return fillet;
  const TSpan rounded{centres.indexOf(corner->x - perRadius * r * a.dx), centres.indexOf(corner->x + perRadius * r * b.dx)};
  fillet = fitCircle(centres, rounded, *circle, circleBetween(a, b, isCentreBelow), noise2, kFilletCutOff);
  if (!fillet.isFound || fillet.circle.r > mostR) fillet.circle = *circle;
  fillet.isFound = true;
  return fillet;
}

}  // namespace weld
