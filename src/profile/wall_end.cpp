#include "profile/wall_end.h"

#include "stripe/stripe_end.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace weld {

namespace {

constexpr int kReachPx = 100;        // columns beyond the last centre that may be lit
constexpr double kInsidePx = 150.0;  // columns before it that tell how bright the plate is
constexpr double kBesidePx = 30.0;   // rows from the line of the plate: farther away nothing shines on it
constexpr double kLeastOffPx = 3.0;  // from that line, of a centre that is not the plate's
constexpr double kHalfColumn = 0.5;
constexpr double kLeastCosine = 0.02;
constexpr double kHiddenPerRadius = 0.3;  // standard deviation of an edge under its flare
constexpr std::size_t kLeastCentres = 10;

// An end of a plate, and what lies on the other side of the wall, in the sense of the layout.
struct TWallEnd {
  const TFittedElement& plate;
  bool isRight;
  cv::Point2d beyond;

  cv::Point2d pos() const { return isRight ? plate.right : plate.left; }
  const TLine& line() const { return isRight ? plate.lines.right : plate.lines.left; }
};

// The centres of the plate before its end, in the image.
TPoints centresBefore(const TFrame& frame, const TOrientedCentres& centres, int sense, const TWallEnd& end) {
  const double x = end.pos().x;
  const int first = std::max(end.plate.span.first, centres.indexOf(end.isRight ? x - kInsidePx : x));
  const int last = std::min(end.plate.span.last, centres.indexOf(end.isRight ? x : x + kInsidePx));
  TPoints points(frame.memory);
  for (int i = first; i < last; ++i) {
    const cv::Point2d p = centres.at(i);
    if (std::abs(end.line().offsetOf(p.x, p.y)) < kLeastOffPx)
      points.emplace_back(static_cast<float>(p.x), static_cast<float>(sense * p.y));
  }
  return points;
}

// Where the light of the plate ends; nothing without an image or centres.
std::optional<TLitEnd> litEnd(const TWallLight& light, int sense, const TWallEnd& end) {
  if (light.frame == nullptr) return std::nullopt;
  const TPoints points = centresBefore(*light.frame, light.centres, sense, end);
  if (points.size() < kLeastCentres) return std::nullopt;
  const TLine& line = end.line();
  const double k = line.dy / std::max(line.dx, kLeastCosine);
  const bool isFree = std::abs(line.offsetOf(end.beyond.x, end.beyond.y)) > kBesidePx;
  const int freePx = isFree ? kReachPx : roundToInt(std::abs(end.beyond.x - end.pos().x));
  return endOfLight(*light.frame, {points, end.isRight, light.stripeWidthPx, kReachPx, freePx},
                    {sense * k, sense * (line.y - k * line.x)});
}

void settle(const TWallLight& light, int sense, const TWallEnd& at, TFittedElement& plate) {
  cv::Point2d& end = at.isRight ? plate.right : plate.left;
  const TFlare* const flare = flareAt(light.flares, end.x);
  const std::optional<TLitEnd> lit = litEnd(light, sense, at);
  if (!lit && flare == nullptr) return;
  const bool isHidden = flare != nullptr && !(lit && lit->isSharp);
  const double x = isHidden ? flare->middleX : lit->pos.x + (at.isRight ? kHalfColumn : -kHalfColumn);
  if (isHidden) plate.hiddenPx = kHiddenPerRadius * flare->radiusPx;
  end.y += (x - end.x) * at.line().dy / std::max(at.line().dx, kLeastCosine);
  end.x = x;
}

}  // namespace

void endAtWalls(const TWallLight& light, TProfileLayout& layout) {
  for (std::size_t j = 0; j + 1 < layout.count(); ++j) {
    if (layout.profile->junctions[j].kind != TJunctionKind::jump) continue;
    TFittedElement& left = layout.elements[j];
    TFittedElement& right = layout.elements[j + 1];
    const cv::Point2d leftEnd = left.right;
    if (layout.range(j).role == TElementRole::plate) settle(light, layout.sense, {left, true, right.left}, left);
    if (layout.range(j + 1).role == TElementRole::plate)
      settle(light, layout.sense, {right, false, leftEnd}, right);
  }
}

}  // namespace weld
