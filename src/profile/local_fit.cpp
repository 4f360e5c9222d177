#include "profile/local_fit.h"

#include <algorithm>
#include <cmath>
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

// As TMoments::lineOf, about a given origin.
TLine lineOf(const TWindowSum& s, double originX, double originY) {
  TLine line;
  const double mx = s.x / s.n;
  const double my = s.y / s.n;
  const double xx = std::max(0.0, s.xx / s.n - mx * mx);
  const double yy = std::max(0.0, s.yy / s.n - my * my);
  const double xy = s.xy / s.n - mx * my;
  const double half = 0.5 * (xx - yy);
  const double root = std::sqrt(half * half + xy * xy);
  double dx = half >= 0.0 ? half + root : xy;
  double dy = half >= 0.0 ? xy : root - half;
  const double length = std::sqrt(dx * dx + dy * dy);
  if (length > 0.0) {
    const double sign = dx < 0.0 ? -1.0 : 1.0;
    line.dx = sign * dx / length;
    line.dy = sign * dy / length;
  }
  line.x = mx + originX;
  line.y = my + originY;
  line.weight = s.n;
  line.spread = s.n * (0.5 * (xx + yy) + root);
  line.variance = std::max(0.0, 0.5 * (xx + yy) - root);
  return line;
}

TWindowSum difference(const TWindowSum& a, const TWindowSum& b) {
  return {a.n - b.n, a.x - b.x, a.y - b.y, a.xx - b.xx, a.xy - b.xy, a.yy - b.yy};
}

class TWindows {
public:
  TWindows(const TOrientedCentres& c, TSpan s, bool isRough, TWindowSums& m)
      : centres(c),
        span(s),
        step(isRough ? std::max(1, s.count() / kRoughCentres) : 1),
        origin(c.at((s.first + s.last) / 2)),
        sums(m) {}

  void weigh(const TBlend& blend, double limit2) {
    total = {};
    sums[0] = total;
    const double invLimit2 = 1.0 / limit2;
    std::size_t next = 1;
    for (int i = span.first; i < span.last; i += step) {
      const auto at = static_cast<std::size_t>(i);
      const double offset = blend.offsetOf(centres.x[at], centres.y[at]);
      const double u = std::max(0.0, 1.0 - offset * offset * invLimit2);
      const double w = centres.weight[at] * u * u;
      const double x = centres.x[at] - origin.x;
      const double y = centres.y[at] - origin.y;
      total.n += w;
      total.x += w * x;
      total.y += w * y;
      total.xx += w * x * x;
      total.xy += w * x * y;
      total.yy += w * y * y;
      sums[next++] = total;
    }
  }

  // Weight over the number of centres.
  double share() const { return total.n * step / span.count(); }
  bool hasLine() const { return total.n >= kFewest; }
  TLine whole() const { return lineOf(total, origin.x, origin.y); }

  // The window at one end that promises the smallest error there.
  TLine best(bool isLeft, double noise2, double mostPx) const {
    TLine chosen = whole();
    double least = std::numeric_limits<double>::infinity();
    const double lengthPx =
        centres.x[static_cast<std::size_t>(span.last) - 1] - centres.x[static_cast<std::size_t>(span.first)];
    for (const double windowPx : kWindowsPx) {
      const double sizePx = std::min(windowPx, mostPx);
      const bool isWhole = sizePx >= lengthPx;
      const TWindowSum part = isWhole ? total : partOf(isLeft, sizePx);
      if (part.n >= kFewestInWindow || isWhole) {
        const TLine line = lineOf(part, origin.x, origin.y);
        const double rate = kBiasShare * std::max(0.0, line.variance - kBiasFrom * noise2) +
                            kVarianceShare * std::max(line.variance, noise2) / part.n;
        if (rate < least) {
          least = rate;
          chosen = line;
        }
      }
    }
    return chosen;
  }

private:
  TWindowSum partOf(bool isLeft, double sizePx) const {
    if (isLeft) {
      const int last = centres.indexOf(centres.x[static_cast<std::size_t>(span.first)] + sizePx);
      return sums[static_cast<std::size_t>(std::min(last, span.last) - span.first)];
    }
    const int first = centres.indexOf(centres.x[static_cast<std::size_t>(span.last) - 1] - sizePx);
    return difference(total, sums[static_cast<std::size_t>(std::max(first, span.first) - span.first)]);
  }

  const TOrientedCentres& centres;
  TSpan span;
  int step;
  cv::Point2d origin;
  TWindowSums& sums;
  TWindowSum total;
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
                          const TLocalFitSettings& settings, TWindowSums& sums) {
  TLocalLines lines;
  if (span.count() < static_cast<int>(kFewest)) return lines;
  TWindows windows(centres, span, settings.isRough, sums);
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
  lines.left = windows.best(true, settings.noise2, settings.mostPx);
  lines.right = windows.best(false, settings.noise2, settings.mostPx);
  return lines;
}

}  // namespace weld
