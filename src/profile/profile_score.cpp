#include "profile/profile_score.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace weld {

namespace {

constexpr double kSharpReachPx = 25.0;  // from a sharp corner to the nearest centre
constexpr double kFilletOffPx = 1.0;    // of a rounded corner that is no circle
constexpr double kCostPerCentre = 1.0 / 3.0;
constexpr double kBound = 2.0;     // cost of a centre that belongs to nothing
constexpr double kMost = 3.0;      // of one that an element does not explain
constexpr double kFreeCost = 0.8;  // of a centre outside the joint, over the bound
constexpr double kBowPerLength = 0.003;
constexpr int kMostScored = 90;  // centres of an element, one of each stretch of it
constexpr double kGolden = 0.6180339887498949;
constexpr double kInlierSigmas = 3.5;
constexpr double kEndPx = 90.0;  // columns next to a corner that must be seen
constexpr double kCostPerLine = 8.0;
constexpr double kCostPerArc = 11.2;
constexpr double kArcSharingOne = 6.4;
constexpr double kArcSharingBoth = 3.2;
constexpr double kCostPerFillet = 3.2;

// ln(x) for x >= 1 within 0.005: the exponent, and a parabola through the mantissa.
double roughLog(double x) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &x, sizeof(bits));
  const auto exponent = static_cast<double>(static_cast<std::int64_t>(bits >> 52U) - 1023);
  bits = (bits & 0xFFFFFFFFFFFFFULL) | 0x3FF0000000000000ULL;
  double mantissa = 0.0;
  std::memcpy(&mantissa, &bits, sizeof(mantissa));
  return 0.6931471805599453 * (exponent + (mantissa - 1.0) * (1.0 + 0.3465735902799727 * (2.0 - mantissa)));
}

// Grows with the logarithm of the distance: real surfaces bow and wave.
double costOf(double offset, double invNoise2) {
  return std::min(kMost, 0.5 * roughLog(1.0 + offset * offset * invNoise2));
}

double penaltyOf(const TElementRange& range) {
  if (range.kind == TElementKind::line) return kCostPerLine;
  if (range.isTouchingLeft && range.isTouchingRight) return kArcSharingBoth;
  return range.isTouchingLeft || range.isTouchingRight ? kArcSharingOne : kCostPerArc;
}

struct TEndShares {
  double left = 1.0;
  double right = 1.0;
};

class TElementScore {
public:
  TElementScore(const TOrientedCentres& c, const TFittedElement& e, const TElementRange& r)
      : centres(c), element(e), range(r), surface(e, r), step(std::max(1, e.span.count() / kMostScored)) {}

  // A line counts as the straight or the bent one, whichever explains more. A flank of a joint may bow.
  double cost(double noise2, bool isOfJoint) const {
    const bool mayBow = isOfJoint && range.role == TElementRole::flank;
    const double inv = 1.0 / (noise2 + (mayBow ? bow2() : 0.0));
    double bent = 0.0;
    double straight = 0.0;
    int scored = 0;
    for (int from = element.span.first; from < element.span.last; from += step, ++scored) {
      const cv::Point2d p = centres.at(std::min(from + picked(scored), element.span.last - 1));
      bent += costOf(surface.offsetOf(p), inv);
      if (range.kind == TElementKind::line) straight += costOf(element.lines.whole.offsetOf(p.x, p.y), inv);
    }
    const double least = range.kind == TElementKind::line ? std::min(bent, straight) : bent;
    return element.span.count() * least / std::max(1, scored);
  }

  TEndShares shares() const {
    const int leftEnd = centres.indexOf(element.left.x + kEndPx);
    const int rightEnd = centres.indexOf(element.right.x - kEndPx);
    return {shareOf({element.span.first, std::min(element.span.last, leftEnd)}),
            shareOf({std::max(element.span.first, rightEnd), element.span.last})};
  }

private:
  double shareOf(TSpan span) const {
    const double limit = kInlierSigmas * kInlierSigmas * (element.noise2 + bow2());
    int inside = 0;
    for (int i = span.first; i < span.last; ++i) {
      const double offset = surface.offsetOf(centres.at(i));
      inside += offset * offset < limit ? 1 : 0;
    }
    return span.count() > 0 ? static_cast<double>(inside) / span.count() : 1.0;
  }
  // Whole rows repeat along a tilted line: at equal distances all centres may be alike.
  int picked(int stretch) const {
    const double turns = kGolden * stretch;
    return static_cast<int>((turns - std::floor(turns)) * step);
  }
  double bow2() const {
    const double bowPx = kBowPerLength * (element.right.x - element.left.x);
    return bowPx * bowPx;
  }

  const TOrientedCentres& centres;
  const TFittedElement& element;
  const TElementRange& range;
  TSurface surface;
  int step;
};

// A centre of a rounded corner's circle that lies below it belongs to a corner that turns downwards.
bool isTurningDown(const TProfileLayout& layout, std::size_t j) {
  const TLine& a = layout.elements[j].lines.right;
  const TLine& b = layout.elements[j + 1].lines.left;
  return a.dx * b.dy - a.dy * b.dx > 0.0;
}

double filletCost(const TOrientedCentres& centres, TSpan span, const TFillet& fillet, double noise2) {
  double cost = 0.0;
  for (int i = span.first; i < span.last; ++i) cost += costOf(fillet.offsetOf(centres.at(i)), 1.0 / noise2);
  return cost;
}

// Of the centres between two tangent points, those on the arc.
double filletShare(const TOrientedCentres& centres, TSpan span, const TFillet& fillet, double noise2) {
  const double limitPx = kFilletOffPx + kInlierSigmas * std::sqrt(noise2);
  int inside = 0;
  for (int i = span.first; i < span.last; ++i)
    inside += std::abs(fillet.offsetOf(centres.at(i))) < limitPx ? 1 : 0;
  return span.count() > 0 ? static_cast<double>(inside) / span.count() : 1.0;
}

// A corner that is seen to be sharp: one whose rounding is hidden would lie anywhere.
bool isSeenAt(const TOrientedCentres& centres, cv::Point2d corner) {
  const int i = centres.indexOf(corner.x);
  for (int k = std::max(0, i - 1); k < std::min(centres.count(), i + 1); ++k) {
    const cv::Point2d apart = centres.at(k) - corner;
    if (apart.dot(apart) < kSharpReachPx * kSharpReachPx) return true;
  }
  return false;
}

}  // namespace

TLayoutScore scoreLayout(const TOrientedCentres& centres, const TProfileLayout& layout, double noisePx) {
  TLayoutScore score;
  const std::size_t n = layout.count();
  const double noise2 = noisePx * noisePx;
  double points =
      kBound * kFreeCost * (layout.elements[0].span.first + centres.count() - layout.elements[n - 1].span.last);
  for (std::size_t e = 0; e < n; ++e) {
    const TFittedElement& element = layout.elements[e];
    const bool hasLeft = e > 0;
    const bool hasRight = e + 1 < n;
    TElementScore of(centres, element, layout.range(e));
    points += of.cost(noise2, n > 1);
    const TEndShares share = of.shares();
    score.shares[e] = std::min(hasLeft ? share.left : 1.0, hasRight ? share.right : 1.0);
    score.worstShare = std::min(score.worstShare, score.shares[e]);
    score.cost += penaltyOf(layout.range(e));
    if (e + 1 == n) break;
    const TSpan between{element.span.last, layout.elements[e + 1].span.first};
    if (layout.fillets[e].isFound) {
      const TFillet fillet{layout.fillets[e].circle, isTurningDown(layout, e)};
      points += filletCost(centres, between, fillet, noise2);
      score.cost += kCostPerFillet;
      const double share2 = std::max({noise2, element.noise2, layout.elements[e + 1].noise2});
      score.worstShare = std::min(score.worstShare, filletShare(centres, between, fillet, share2));
    } else {
      points += kBound * between.count();
      const bool isRounding = layout.profile->junctions[e].kind == TJunctionKind::fillet;
      if (isRounding && !isSeenAt(centres, element.right)) score.worstShare = 0.0;
    }
  }
  score.cost += kCostPerCentre * points;
  return score;
}

}  // namespace weld
