#include "profile/local_fit.h"

#include "support/kernels/kernels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>

namespace weld {

namespace {

constexpr double kWindowsPx[] = {1e9, 400.0, 260.0, 130.0, 65.0, 36.0};  // columns
constexpr double kFewest = 3.0;                                          // weight of a window
constexpr double kFewestInWindow = 10.0;
constexpr double kBiasFrom = 1.5;  // variance over that of the noise above which a window is taken for bent
constexpr double kBiasShare = 0.5;
constexpr double kVarianceShare = 12.0;  // of a crossing, over that of a centre divided by the number of centres

constexpr double kLeastShare = 0.35;  // of the centres that a start must explain, else it is off
constexpr int kWidenings = 4;         // of the cut-off, twofold

constexpr double kSteepest = 0.02;  // cosine of a line's angle
constexpr int kRoughCentres = 100;

TMomentSum sumOf(const TMomentSum& a, const TMomentSum& b) {
  return {a.n + b.n, a.x + b.x, a.y + b.y, a.xx + b.xx, a.xy + b.xy, a.yy + b.yy};
}

TMomentSum difference(const TMomentSum& a, const TMomentSum& b) {
  return {a.n - b.n, a.x - b.x, a.y - b.y, a.xx - b.xx, a.xy - b.xy, a.yy - b.yy};
}

// A stretch of centres, and windows of falling size at either end of it.
class TWindows {
public:
  TWindows(const TOrientedCentres& c, TSpan s, const TLocalFitSettings& settings)
      : centres(c),
        span(s),
        step(settings.isRough ? std::max(1, s.count() / kRoughCentres) : 1),
        origin(c.at((s.first + s.last) / 2)) {
    if (settings.isRough) return;
    for (const double windowPx : kWindowsPx) addWindow(std::min(windowPx, settings.mostPx));
    std::sort(cuts.begin(), cuts.begin() + cutCount, [](const TCut& a, const TCut& b) { return a.at < b.at; });
  }

  void weigh(const TBlend& blend, double limit2) {
    const TCubicCurve curve = blend.curve(limit2);
    const TMomentKernels& fast = kernels().moments;
    total = {};
    int from = span.first;
    const auto addUpTo = [&](int end) {
      const auto at = static_cast<std::size_t>(from);
      const TMomentPoints points{&centres.x[at], &centres.y[at], &centres.weight[at], end - from, step};
      if (end > from) total = sumOf(total, fast.sumNear(points, curve, origin.x, origin.y));
      from = end;
    };
    for (int i = 0; i < cutCount; ++i) {
      addUpTo(cuts[static_cast<std::size_t>(i)].at);
      cuts[static_cast<std::size_t>(i)].before = total;
    }
    addUpTo(span.last);
  }

  // Weight over the number of centres.
  double share() const { return total.n * step / span.count(); }
  bool hasLine() const { return total.n >= kFewest; }
  TLine whole() const { return lineOf(total, origin); }

  // The window at one end that promises the smallest error there.
  TLine best(bool isLeft, double noise2) const {
    TMomentSum chosen = total;
    double least = std::numeric_limits<double>::infinity();
    const auto look = [&](const TMomentSum& part) {
      const double variance = varianceOf(part);
      const double rate = kBiasShare * std::max(0.0, variance - kBiasFrom * noise2) +
                          kVarianceShare * std::max(variance, noise2) / part.n;
      if (rate < least) {
        least = rate;
        chosen = part;
      }
    };
    if (hasWhole) look(total);
    for (int i = 0; i < cutCount; ++i) {
      const TCut& cut = cuts[static_cast<std::size_t>(i)];
      if (cut.isLeft != isLeft) continue;
      const TMomentSum part = isLeft ? cut.before : difference(total, cut.before);
      if (part.n >= kFewestInWindow) look(part);
    }
    return lineOf(chosen, origin);
  }

private:
  // Where a window of the left end stops, or one of the right end begins.
  struct TCut {
    int at = 0;
    bool isLeft = true;
    TMomentSum before;  // of the stretch
  };

  void addWindow(double sizePx) {
    const double leftX = centres.at(span.first).x;
    const double rightX = centres.at(span.last - 1).x;
    hasWhole = hasWhole || sizePx >= rightX - leftX;
    if (sizePx >= rightX - leftX || sizePx == lastPx) return;
    lastPx = sizePx;
    const auto next = static_cast<std::size_t>(cutCount);
    cuts[next].at = std::min(centres.indexOf(leftX + sizePx), span.last);
    cuts[next + 1].at = std::max(centres.indexOf(rightX - sizePx), span.first);
    cuts[next + 1].isLeft = false;
    cutCount += 2;
  }

  const TOrientedCentres& centres;
  TSpan span;
  int step;
  cv::Point2d origin;
  std::array<TCut, 2 * std::size(kWindowsPx)> cuts;
  int cutCount = 0;
  double lastPx = 0.0;    // size of the last window
  bool hasWhole = false;  // a window as large as the stretch
  TMomentSum total;
};

}  // namespace

TBlend::TBlend(const TLocalLines& lines, double leftX, double rightX)
    : left(lines.left), right(lines.right), from(leftX), scale(rightX > leftX ? 1.0 / (rightX - leftX) : 0.0) {
  const double width = std::max(0.0, rightX - leftX);
  const double leftSlope = left.dy / std::max(left.dx, kSteepest);
  const double rightSlope = right.dy / std::max(right.dx, kSteepest);
  const double leftY = left.y + (leftX - left.x) * leftSlope;
  const double rise = right.y + (rightX - right.x) * rightSlope - leftY;
  c0 = leftY;
  c1 = leftSlope * width;
  c2 = 3.0 * rise - width * (2.0 * leftSlope + rightSlope);
  c3 = width * (leftSlope + rightSlope) - 2.0 * rise;
  cosine = width > 0.0 ? width / std::sqrt(width * width + rise * rise) : 1.0;
}

int TOrientedCentres::indexOf(double column) const {
  return static_cast<int>(std::lower_bound(x.begin(), x.end(), column) - x.begin());
}

TLocalLines fitLocalLines(const TOrientedCentres& centres, TSpan span, const TLocalLines& before,
                          const TLocalFitSettings& settings) {
  TLocalLines lines;
  if (span.count() < static_cast<int>(kFewest)) return lines;
  TWindows windows(centres, span, settings);
  const TBlend blend(before, centres.at(span.first).x, centres.at(span.last - 1).x);
  double limit2 = settings.cutOff * settings.cutOff * settings.noise2;
  windows.weigh(blend, limit2);
  for (int widening = 0; widening < kWidenings && windows.share() < kLeastShare; ++widening) {
    limit2 *= 4.0;
    windows.weigh(blend, limit2);
  }
  if (!windows.hasLine()) return lines;
  lines.isFound = true;
  lines.left = lines.right = lines.whole = windows.whole();
  if (settings.isRough) return lines;
  lines.left = windows.best(true, settings.noise2);
  lines.right = windows.best(false, settings.noise2);
  return lines;
}

}  // namespace weld
