#include "profile/profile_layout.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kTukey = 4.7;
constexpr double kCutOffs[] = {2.0 * kTukey, 1.1 * kTukey, kTukey};  // by round
constexpr double kBows[] = {0.004, 0.003, 0.0015};  // rms over the columns of a real surface, by round
constexpr double kWalkBows[] = {0.012, 0.004};      // the same for the search of an end
constexpr double kPlateWindowPx = 260.0;
constexpr double kLeastRoundPx = 1.5;   // of a corner, left out of the lines
constexpr double kRoundPerWidth = 0.3;  // the same over the width of the stripe
constexpr int kFewestCentres = 4;

// Point of a circle nearest to a line's crossing with it, on the side of a guess.
std::optional<cv::Point2d> meetingOf(const TLine& line, const TCircle& circle, cv::Point2d guess) {
  const double offset = line.offsetOf(circle.x, circle.y);
  const double half2 = circle.r * circle.r - offset * offset;
  if (half2 < -0.5 * circle.r * circle.r) return std::nullopt;
  const double along = line.alongOf(circle.x, circle.y);
  const double half = half2 > 0.0 ? std::sqrt(half2) : 0.0;
  const double at = line.alongOf(guess.x, guess.y) < along ? along - half : along + half;
  return cv::Point2d(line.x + at * line.dx, line.y + at * line.dy);
}

class TRefiner {
public:
  TRefiner(const TOrientedCentres& c, const TRefineSettings& s, TProfileLayout& l, TWindowSums& w)
      : centres(c), settings(s), layout(l), sums(w) {}

  bool run() {
    for (round = 0; round < settings.rounds; ++round) {
      const std::array<TFittedElement, kMostElements> before = layout.elements;
      if (!fitLines() || !fitArcs() || !placeJunctions()) return false;
      if (round > 0 && hasSettled(before)) return true;
    }
    return true;
  }

private:
  bool hasSettled(const std::array<TFittedElement, kMostElements>& before) const {
    for (std::size_t e = 0; e < layout.count(); ++e) {
      const TSpan now = layout.elements[e].span;
      if (now.first != before[e].span.first || now.last != before[e].span.last) return false;
    }
    return true;
  }

  bool isLine(std::size_t e) const { return layout.range(e).kind == TElementKind::line; }
  double cutOff() const { return kCutOffs[std::min(round, 2)]; }
  // Wide enough for a start that is off by so much, and for a surface that bows.
  double cutOffOf(const TFittedElement& fitted, double start2) const {
    const double bowPx = kBows[std::min(round, 2)] * (fitted.right.x - fitted.left.x);
    return cutOff() * std::sqrt(std::max(start2, fitted.noise2 + bowPx * bowPx) / fitted.noise2);
  }
  TFittedElement& element(std::size_t e) { return layout.elements[e]; }

  // Without the rounded ends, and of a plate only what lies next to its corner.
  TSpan spanToFit(std::size_t e, bool isRough) const {
    const TFittedElement& fitted = layout.elements[e];
    const TSpan span = fitted.span;
    const double roundPx =
        std::max(kLeastRoundPx, kRoundPerWidth * settings.stripeWidthPx) * std::max(0.3, fitted.lines.whole.dx);
    TSpan inner = span;
    if (e > 0) inner.first = std::max(span.first, centres.indexOf(fitted.left.x + roundPx));
    if (e + 1 < layout.count()) inner.last = std::min(span.last, centres.indexOf(fitted.right.x - roundPx));
    if (!isRough && layout.range(e).role == TElementRole::plate && inner.count() > 0) {
      if (e == 0)
        inner.first = std::max(inner.first, centres.indexOf(centres.at(inner.last - 1).x - kPlateWindowPx));
      if (e > 0) inner.last = std::min(inner.last, centres.indexOf(centres.at(inner.first).x + kPlateWindowPx));
    }
    return inner.count() >= kFewestCentres ? inner : span;
  }

  // A plate is read next to its corner; the rest of it only tells how far it reaches.
  void addFarLine(std::size_t e, const TLocalLines& before, TLocalFitSettings how) {
    how.isRough = true;
    TLocalLines& lines = element(e).lines;
    const TLocalLines all = fitLocalLines(centres, element(e).span, before, how, sums);
    if (all.isFound) (e == 0 ? lines.left : lines.right) = lines.whole = all.whole;
  }

  bool fitLines() {
    for (std::size_t e = 0; e < layout.count(); ++e) {
      if (!isLine(e)) continue;
      TFittedElement& fitted = element(e);
      if (fitted.span.count() < kFewestCentres) return false;
      const bool isPlate = layout.range(e).role == TElementRole::plate;
      const double start2 = round == 0 ? fitted.lines.whole.variance : 0.0;  // ghosts may have bent the line
      // They rule small windows as long as the line is rough. A single element has no corner to be read.
      const bool isRough = round == 0 || layout.count() == 1;
      const TLocalFitSettings how{fitted.noise2, cutOffOf(fitted, start2), isPlate ? kPlateWindowPx : 1e9,
                                  isRough};
      const TLocalLines before = fitted.lines;
      fitted.lines = fitLocalLines(centres, spanToFit(e, isRough), before, how, sums);
      if (isPlate && !isRough) addFarLine(e, before, how);
      if (!fitted.lines.isFound) return false;
    }
    return true;
  }

  bool fitArcs() {
    for (std::size_t e = 0; e < layout.count(); ++e) {
      if (isLine(e)) continue;
      TFittedElement& fitted = element(e);
      const TElementRange& range = layout.range(e);
      TCircleFreedom freedom = freeCircle();
      TCircle start = fitted.arc.circle;
      if (range.isTouchingLeft && range.isTouchingRight) {
        const TLine& left = element(e - 1).lines.right;
        const TLine& right = element(e + 1).lines.left;
        freedom = circleBetween(left, right, range.isCentreBelow);
        const std::optional<TCircle> moved = touching(start.r, left, right, range.isCentreBelow);
        if (!moved) return false;
        start = *moved;
      } else if (range.isTouchingLeft || range.isTouchingRight) {
        const TLine& line = range.isTouchingLeft ? element(e - 1).lines.right : element(e + 1).lines.left;
        freedom = circleOnLine(line, range.isCentreBelow);
        start = touching(start, line, range.isCentreBelow);
      }
      fitted.arc = fitCircle(centres, fitted.span, start, freedom, fitted.noise2, cutOff());
      if (!fitted.arc.isFound) return false;
    }
    return true;
  }

  bool placeJunctions() {
    element(0).left = centres.at(element(0).span.first);
    element(layout.count() - 1).right = centres.at(element(layout.count() - 1).span.last - 1);
    for (std::size_t j = 0; j + 1 < layout.count(); ++j) {
      if (!place(j)) return false;
    }
    for (std::size_t e = 0; e < layout.count(); ++e) {
      if (element(e).span.count() < kFewestCentres) return false;
    }
    return true;
  }

  bool place(std::size_t j) {
    switch (layout.profile->junctions[j].kind) {
      case TJunctionKind::cross:
        return placeCorner(j, cornerOf(j));
      case TJunctionKind::fillet:
        return placeFillet(j);
      case TJunctionKind::tangent:
        return placeCorner(j, touchOf(j));
      case TJunctionKind::root:
        return placeRoot(j);
      case TJunctionKind::hole:
        setSeenEnds(j);
        return true;
      default:
        return placeEnds(j);
    }
  }

  std::optional<cv::Point2d> cornerOf(std::size_t j) {
    const TFittedElement& a = element(j);
    const TFittedElement& b = element(j + 1);
    if (isLine(j) && isLine(j + 1)) return crossingOf(a.lines.right, b.lines.left);
    const cv::Point2d guess = centres.at(b.span.first);
    if (isLine(j)) return meetingOf(a.lines.right, b.arc.circle, guess);
    if (isLine(j + 1)) return meetingOf(b.lines.left, a.arc.circle, guess);
    return guess;
  }

  std::optional<cv::Point2d> touchOf(std::size_t j) {
    const bool isLineLeft = isLine(j);
    if (isLineLeft == isLine(j + 1)) return centres.at(element(j + 1).span.first);
    const TLine& line = isLineLeft ? element(j).lines.right : element(j + 1).lines.left;
    const TCircle& circle = element(isLineLeft ? j + 1 : j).arc.circle;
    const double along = line.alongOf(circle.x, circle.y);
    return cv::Point2d(line.x + along * line.dx, line.y + along * line.dy);
  }

  // Both elements end in one point.
  bool placeCorner(std::size_t j, const std::optional<cv::Point2d>& corner) {
    TFittedElement& a = element(j);
    TFittedElement& b = element(j + 1);
    if (!corner) return false;
    const int border = centres.indexOf(corner->x);
    if (border < a.span.first + 3 || border > b.span.last - 3) return false;
    a.span.last = b.span.first = border;
    a.right = b.left = *corner;
    return true;
  }

  bool placeFillet(std::size_t j) {
    if (!placeCorner(j, cornerOf(j))) return false;
    TFittedElement& a = element(j);
    TFittedElement& b = element(j + 1);
    TCircleFit& fillet = layout.fillets[j];
    fillet = findFillet(centres, a, b, std::max(a.noise2, b.noise2), fillet.isFound ? fillet.circle.r : 0.0);
    if (!fillet.isFound) return true;
    const TCircle& c = fillet.circle;
    const TLine& left = a.lines.right;
    const TLine& right = b.lines.left;
    const double leftAlong = left.alongOf(c.x, c.y);
    const double rightAlong = right.alongOf(c.x, c.y);
    a.right = {left.x + leftAlong * left.dx, left.y + leftAlong * left.dy};
    b.left = {right.x + rightAlong * right.dx, right.y + rightAlong * right.dy};
    a.span.last = centres.indexOf(a.right.x);
    b.span.first = centres.indexOf(b.left.x);
    return a.span.count() >= 3 && b.span.count() >= 3;
  }

  // Half a column beyond the last centres, on the elements.
  void setSeenEnds(std::size_t j) {
    TFittedElement& a = element(j);
    TFittedElement& b = element(j + 1);
    a.right = pointOn(j, centres.at(a.span.last - 1).x + 0.5, true);
    b.left = pointOn(j + 1, centres.at(b.span.first).x - 0.5, false);
  }

  cv::Point2d pointOn(std::size_t e, double x, bool isRight) {
    const TFittedElement& fitted = element(e);
    if (isLine(e)) {
      const TLine& line = isRight ? fitted.lines.right : fitted.lines.left;
      return {x, line.y + (x - line.x) * line.dy / std::max(line.dx, 0.02)};
    }
    const TCircle& c = fitted.arc.circle;
    const double dx = std::clamp(x - c.x, -c.r, c.r);
    const double height = std::sqrt(c.r * c.r - dx * dx);
    return {c.x + dx, layout.range(e).isCentreBelow ? c.y - height : c.y + height};
  }

  // Ends seen, none of them beyond the crossing.
  bool placeRoot(std::size_t j) {
    const std::optional<cv::Point2d> corner = cornerOf(j);
    if (!corner) return false;
    const int border = centres.indexOf(corner->x);
    return walkEnds(j, border - 1, border);
  }

  bool placeEnds(std::size_t j) { return walkEnds(j, element(j + 1).span.first - 1, element(j).span.last); }

  // Each element goes on as far as it is seen, the left one at most to a centre, the right one back to another.
  bool walkEnds(std::size_t j, int mostA, int leastB) {
    TFittedElement& a = element(j);
    TFittedElement& b = element(j + 1);
    const int fromA = std::min((a.span.first + a.span.last) / 2, mostA);
    const int fromB = std::max((b.span.first + b.span.last) / 2, leastB);
    if (fromA <= a.span.first || fromB >= b.span.last) return false;
    const double bow = kWalkBows[std::min(round, 1)];
    a.span.last = walkToEnd(centres, a, layout.range(j), {fromA, mostA, 1, bow}) + 1;
    b.span.first = walkToEnd(centres, b, layout.range(j + 1), {fromB, std::max(leastB, a.span.last), -1, bow});
    if (a.span.count() < 3 || b.span.count() < 3) return false;
    setSeenEnds(j);
    return true;
  }

  const TOrientedCentres& centres;
  const TRefineSettings& settings;
  TProfileLayout& layout;
  TWindowSums& sums;
  int round = 0;
};

TLine turned(TLine line, int sense) {
  line.y *= sense;
  line.dy *= sense;
  return line;
}

}  // namespace

TProfileLayout layoutOf(const TProfileCut& cut, TFitTable& table) {
  TProfileLayout layout;
  layout.profile = cut.profile;
  layout.sense = cut.sense;
  layout.cost = cut.cost;
  for (std::size_t e = 0; e < cut.profile->elementCount; ++e) {
    TFittedElement& element = layout.elements[e];
    const TLineEntry& entry = table.line(cut.first[e], cut.last[e]);
    element.span = element.searched = table.span(cut.first[e], cut.last[e]);
    element.noise2 = entry.noise2;
    element.left.x = entry.leftX;
    element.right.x = entry.rightX;
    if (cut.profile->elements[e].kind == TElementKind::line) {
      const TLine line = turned(entry.line, cut.sense);
      element.lines = {line, line, line, true};
    } else {
      element.arc.circle = table.circle(cut.first[e], cut.last[e]).circle;
      element.arc.circle.y *= cut.sense;
    }
  }
  return layout;
}

bool refineLayout(const TOrientedCentres& centres, const TRefineSettings& settings, TProfileLayout& layout,
                  TWindowSums& sums) {
  return TRefiner(centres, settings, layout, sums).run();
}

}  // namespace weld
