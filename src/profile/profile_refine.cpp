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
constexpr double kEndPx = 40.0;         // columns in which an end is looked for
constexpr double kLeastRoundPx = 1.5;   // of a corner, left out of the lines
constexpr double kRoundPerWidth = 0.3;  // the same over the width of the stripe
constexpr int kFewestCentres = 4;

class TRefiner {
public:
  TRefiner(const TOrientedCentres& c, const TRefineSettings& s, TProfileLayout& l)
      : centres(c), settings(s), layout(l) {}

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
    const TLocalLines all = fitLocalLines(centres, element(e).span, before, how);
    if (!all.isFound) return;
    TLocalLines& lines = element(e).lines;
    (e == 0 ? lines.left : lines.right) = lines.whole = all.whole;
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
      fitted.lines = fitLocalLines(centres, spanToFit(e, isRough), before, how);
      if (isPlate && !isRough) addFarLine(e, before, how);
      if (!fitted.lines.isFound) return false;
    }
    return true;
  }

  bool fitArcs() {
    for (std::size_t e = 0; e < layout.count(); ++e) {
      if (isLine(e)) continue;
      const TElementRange& range = layout.range(e);
      const bool isFound = range.isTouchingLeft && range.isTouchingRight ? fitBetween(e)
                           : range.isTouchingLeft || range.isTouchingRight
                               ? fitOnLine(e, range.isTouchingLeft)
                               : fitArc(e, element(e).arc.circle, freeCircle());
      if (!isFound) return false;
    }
    return true;
  }

  bool fitArc(std::size_t e, const TCircle& start, const TCircleFreedom& freedom) {
    TFittedElement& fitted = element(e);
    fitted.arc = fitCircle(centres, fitted.span, {start, freedom}, fitted.noise2, cutOff());
    return fitted.arc.isFound;
  }

  bool fitBetween(std::size_t e) {
    const bool isCentreBelow = layout.range(e).isCentreBelow;
    const TLine& left = element(e - 1).lines.right;
    const TLine& right = element(e + 1).lines.left;
    const std::optional<TCircle> start = touching(element(e).arc.circle.r, left, right, isCentreBelow);
    return start && fitArc(e, *start, circleBetween(left, right, isCentreBelow));
  }

  bool fitOnLine(std::size_t e, bool isLeft) {
    const bool isCentreBelow = layout.range(e).isCentreBelow;
    const TFittedElement& fitted = element(e);
    const TFittedElement& beside = element(isLeft ? e - 1 : e + 1);
    const TLine& line = isLeft ? beside.lines.right : beside.lines.left;
    const TCircleFreedom freedom = circleOnLine(line, isCentreBelow);
    if (round > 0) return fitArc(e, touching(fitted.arc.circle, line, isCentreBelow), freedom);
    const cv::Point2d end = pointOn(e, centres.at(isLeft ? fitted.span.last - 1 : fitted.span.first).x, isLeft);
    const TSpan span{std::min(fitted.span.first, beside.span.first), std::max(fitted.span.last, beside.span.last)};
    const TTouch touch{line, end, isLeft, isCentreBelow};
    return fitArc(e, searchTouching(centres, span, touch, fitted.arc.circle, fitted.noise2), freedom);
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
    fillet = findFillet(centres, a, b, std::max(a.noise2, b.noise2));
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

  // Up to where an end is not looked for: a bend next to it must not cut the element short.
  int trustedIn(TSpan searched, bool isRight) const {
    if (isRight) return centres.indexOf(centres.at(searched.last - 1).x - kEndPx);
    return centres.indexOf(centres.at(searched.first).x + kEndPx);
  }

  // Each element goes on as far as it is seen, the left one at most to a centre, the right one back to another.
  bool walkEnds(std::size_t j, int mostA, int leastB) {
    TFittedElement& a = element(j);
    TFittedElement& b = element(j + 1);
    const int fromA = std::min(std::max((a.span.first + a.span.last) / 2, trustedIn(a.searched, true)), mostA);
    const int fromB = std::max(std::min((b.span.first + b.span.last) / 2, trustedIn(b.searched, false)), leastB);
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
  int round = 0;
};

}  // namespace

bool refineLayout(const TOrientedCentres& centres, const TRefineSettings& settings, TProfileLayout& layout) {
  return TRefiner(centres, settings, layout).run();
}

}  // namespace weld
