#include "profile/fine_fillets.h"

#include "profile/circle_refine.h"
#include "stripe/light_middle.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace weld {

namespace {

constexpr std::size_t kMostColumns = 200;
constexpr int kFewestColumns = 12;
constexpr double kMostMovePx = 2.5;  // of the light from a centre
constexpr double kOwnPx = 3.0;       // of the light from the arc
constexpr double kCutOff = 6.0;
constexpr double kLightPerCentre2 = 0.25;  // variance of the light's rows over that of centres
constexpr double kLeastNoise2 = 0.01;
constexpr double kMostGrowth = 0.25;  // of a radius

cv::Point2d touchPoint(const TLine& line, const TCircle& circle) {
  const double along = line.alongOf(circle.x, circle.y);
  return {line.x + along * line.dx, line.y + along * line.dy};
}

// The light along an arc.
struct TLitArc {
  std::array<double, kMostColumns> x{};
  std::array<double, kMostColumns> y{};
  std::array<double, kMostColumns> weight{};
  std::size_t count = 0;

  TOrientedCentres view() const { return {{x.data(), count}, {y.data(), count}, {weight.data(), count}}; }
};

TLitArc readLight(const TFrame& frame, const TOrientedCentres& centres, TSpan span, int sense,
                  const TFillet& fillet) {
  TLitArc lit;
  for (int i = span.first; i < span.last && lit.count < kMostColumns; ++i) {
    const cv::Point2d p = centres.at(i);
    const double row = isFine(p.y) ? p.y : sense * lightMiddle(frame.image, {p.x, sense * p.y});
    const bool isOwn = std::abs(row - p.y) <= kMostMovePx && std::abs(fillet.offsetOf({p.x, row})) <= kOwnPx;
    if (!isOwn) continue;
    lit.x[lit.count] = p.x;
    lit.y[lit.count] = row;
    lit.weight[lit.count++] = 1.0;
  }
  return lit;
}

}  // namespace

void roundAnew(const TFrame& frame, const TOrientedCentres& centres, std::size_t j, TProfileLayout& layout) {
  TFittedElement& left = layout.elements[j];
  TFittedElement& right = layout.elements[j + 1];
  const TLine& a = left.lines.right;
  const TLine& b = right.lines.left;
  const bool isCentreBelow = a.dx * b.dy - a.dy * b.dx > 0.0;
  const std::optional<TCircle> start = touching(layout.fillets[j].circle.r, a, b, isCentreBelow);
  if (!start) return;
  const TSpan span{centres.indexOf(touchPoint(a, *start).x), centres.indexOf(touchPoint(b, *start).x)};
  const TLitArc lit = readLight(frame, centres, span, layout.sense, {*start, isCentreBelow});
  const TOrientedCentres light = lit.view();
  const double noise2 = std::max(kLeastNoise2, kLightPerCentre2 * std::max(left.noise2, right.noise2));
  TCircleFit fit;
  if (light.count() >= kFewestColumns)
    fit = fitCircle(light, {0, light.count()}, {*start, circleBetween(a, b, isCentreBelow)}, noise2, kCutOff);
  const bool isLike = fit.isFound && std::abs(fit.circle.r - start->r) <= kMostGrowth * start->r;
  if (isLike) layout.fillets[j] = fit;
  if (!isLike) layout.fillets[j].circle = *start;
  left.right = touchPoint(a, layout.fillets[j].circle);
  right.left = touchPoint(b, layout.fillets[j].circle);
}

}  // namespace weld
