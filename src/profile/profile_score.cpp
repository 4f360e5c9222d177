#include "profile/profile_score.h"

#include "support/exact_log.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kCostPerCentre = 1.0 / 3.0;
constexpr double kBound = 2.0;         // cost of a centre that belongs to nothing
constexpr double kBoundSigmas2 = 8.0;  // squared distance that costs half the bound, over the variance
constexpr double kFreeCost = 0.8;      // of a centre outside the joint, over the bound
constexpr double kBowPerLength = 0.003;
constexpr int kMostScored = 120;  // centres of an element, evenly picked
constexpr double kInlierSigmas = 3.5;
constexpr double kEndPx = 90.0;  // columns next to a corner that must be seen
constexpr double kCostPerLine = 8.0;
constexpr double kCostPerArc = 11.2;
constexpr double kArcSharingOne = 6.4;
constexpr double kArcSharingBoth = 3.2;
constexpr double kCostPerFillet = 3.2;

double penaltyOf(const TElementRange& range) {
  if (range.kind == TElementKind::line) return kCostPerLine;
  if (range.isTouchingLeft && range.isTouchingRight) return kArcSharingBoth;
  return range.isTouchingLeft || range.isTouchingRight ? kArcSharingOne : kCostPerArc;
}

struct TShare {
  int inside = 0;
  int all = 0;
  void count(bool isInside) {
    ++all;
    inside += isInside ? 1 : 0;
  }
  double value() const { return all > 0 ? static_cast<double>(inside) / all : 1.0; }
};

struct TEndShares {
  double left = 1.0;
  double right = 1.0;
};

class TElementScore {
public:
  TElementScore(const TOrientedCentres& c, const TFittedElement& e, const TElementRange& r)
      : centres(c), element(e), range(r), step(std::max(1, e.span.count() / kMostScored)) {}

  // Over the bound: the distance of each centre in terms of the element's own scatter, and that scatter itself. A
  // line counts as the straight or the bent one, whichever explains more.
  double cost(double noise2) {
    double variance = scatter(noise2);
    if (range.kind == TElementKind::line) {
      isWhole = true;
      const double straight = scatter(noise2);
      isWhole = straight <= variance;
      variance = std::min(straight, variance);
    }
    const double invBound = 1.0 / (kBoundSigmas2 * variance);
    double sum = 0.0;
    int scored = 0;
    for (int i = element.span.first; i < element.span.last; i += step, ++scored) {
      const double t = offset2(i) * invBound;
      sum += t / (1.0 + t);
    }
    return element.span.count() * (sum / std::max(1, scored) + 0.5 * exactLog(variance / noise2) / kBound);
  }

  TEndShares shares() const {
    const double limit = kInlierSigmas * kInlierSigmas * (element.noise2 + bow2());
    TShare left;
    TShare right;
    for (int i = element.span.first; i < element.span.last; ++i) {
      const double x = centres.at(i).x;
      const bool isLeft = x - element.left.x < kEndPx;
      const bool isRight = element.right.x - x < kEndPx;
      if (!isLeft && !isRight) continue;
      const bool isInside = offset2(i) < limit;
      if (isLeft) left.count(isInside);
      if (isRight) right.count(isInside);
    }
    return {left.value(), right.value()};
  }

private:
  double offset2(int i) const {
    const cv::Point2d p = centres.at(i);
    const double offset =
        isWhole ? element.lines.whole.offsetOf(p.x, p.y) : offsetFrom(element, range, centres.at(i));
    return offset * offset;
  }
  double bow2() const {
    const double bowPx = kBowPerLength * (element.right.x - element.left.x);
    return bowPx * bowPx;
  }
  // Variance of the centres that belong, at most what a real surface has.
  double scatter(double noise2) const {
    const double most = std::max(noise2, element.noise2 + bow2());
    const double invLimit = 1.0 / (kInlierSigmas * kInlierSigmas * most);
    double sum = 0.0;
    int inside = 0;
    for (int i = element.span.first; i < element.span.last; i += step) {
      const double t = offset2(i) * invLimit;
      if (t >= 1.0) continue;
      sum += t;
      ++inside;
    }
    return inside > 0 ? std::clamp(sum / (inside * invLimit), noise2, most) : most;
  }

  const TOrientedCentres& centres;
  const TFittedElement& element;
  const TElementRange& range;
  int step;
  bool isWhole = false;
};

double filletCost(const TOrientedCentres& centres, TSpan span, const TCircle& c, double noise2) {
  double cost = 0.0;
  for (int i = span.first; i < span.last; ++i) {
    const cv::Point2d p = centres.at(i);
    const double offset = std::sqrt((p.x - c.x) * (p.x - c.x) + (p.y - c.y) * (p.y - c.y)) - c.r;
    const double t = offset * offset / (kBoundSigmas2 * noise2);
    cost += t / (1.0 + t);
  }
  return cost;
}

}  // namespace

TLayoutScore scoreLayout(const TOrientedCentres& centres, const TProfileLayout& layout, double noisePx) {
  TLayoutScore score;
  const std::size_t n = layout.count();
  double points = kFreeCost * (layout.elements[0].span.first + centres.count() - layout.elements[n - 1].span.last);
  for (std::size_t e = 0; e < n; ++e) {
    const TFittedElement& element = layout.elements[e];
    const bool hasLeft = e > 0;
    const bool hasRight = e + 1 < n;
    TElementScore of(centres, element, layout.range(e));
    points += of.cost(noisePx * noisePx);
    const TEndShares share = of.shares();
    score.shares[e] = std::min(hasLeft ? share.left : 1.0, hasRight ? share.right : 1.0);
    score.worstShare = std::min(score.worstShare, score.shares[e]);
    score.cost += penaltyOf(layout.range(e));
    if (e + 1 == n) break;
    const TSpan between{element.span.last, layout.elements[e + 1].span.first};
    if (layout.fillets[e].isFound) {
      points += filletCost(centres, between, layout.fillets[e].circle, element.noise2);
      score.cost += kCostPerFillet;
    } else {
      points += between.count();
    }
  }
  score.cost += kBound * kCostPerCentre * points;
  return score;
}

}  // namespace weld
