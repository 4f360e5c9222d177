#include "profile/moments.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr int kNewtonSteps = 12;
constexpr double kLargestRadiusPx = 1e5;

// Second and third moments about the centroid, per unit of weight; z is the squared distance from it.
struct TCentral {
  double meanX, meanY, xx, xy, yy, xz, yz, zz, z;
};

TCentral centralOf(const TMomentSum& s) {
  const double perWeight = 1.0 / s.n;
  TCentral c{};
  c.meanX = s.x * perWeight;
  c.meanY = s.y * perWeight;
  c.xx = std::max(0.0, s.xx * perWeight - c.meanX * c.meanX);
  c.yy = std::max(0.0, s.yy * perWeight - c.meanY * c.meanY);
  c.xy = s.xy * perWeight - c.meanX * c.meanY;
  return c;
}

// Carries the sums of z about the origin over to z about the centroid.
void addCubics(const TMoments::TSums& s, TCentral& c) {
  const double meanZ = (s.xx + s.yy) / s.n;
  const double covXz = s.xz / s.n - c.meanX * meanZ;
  const double covYz = s.yz / s.n - c.meanY * meanZ;
  const double covZz = s.zz / s.n - meanZ * meanZ;
  c.z = c.xx + c.yy;
  c.xz = covXz - 2.0 * (c.meanX * c.xx + c.meanY * c.xy);
  c.yz = covYz - 2.0 * (c.meanX * c.xy + c.meanY * c.yy);
  c.zz = covZz + 4.0 * (c.meanX * c.meanX * c.xx + c.meanY * c.meanY * c.yy) -
         4.0 * (c.meanX * covXz + c.meanY * covYz) + 8.0 * c.meanX * c.meanY * c.xy + c.z * c.z;
}

// Smallest root of the characteristic polynomial, reached from zero.
double taubinRoot(const TCentral& c) {
  const double det = c.xx * c.yy - c.xy * c.xy;
  const double varZ = c.zz - c.z * c.z;
  const double a3 = 4.0 * c.z;
  const double a2 = -3.0 * c.z * c.z - c.zz;
  const double a1 = varZ * c.z + 4.0 * det * c.z - c.xz * c.xz - c.yz * c.yz;
  const double a0 = c.xz * (c.xz * c.yy - c.yz * c.xy) + c.yz * (c.yz * c.xx - c.xz * c.xy) - varZ * det;
  double root = 0.0;
  double value = a0;
  for (int step = 0; step < kNewtonSteps; ++step) {
    const double slope = a1 + root * (2.0 * a2 + 3.0 * a3 * root);
    const double next = slope != 0.0 ? root - value / slope : root;
    if (next == root || !std::isfinite(next)) break;
    const double nextValue = a0 + next * (a1 + next * (a2 + next * a3));
    if (std::abs(nextValue) >= std::abs(value)) break;
    root = next;
    value = nextValue;
  }
  return root;
}

}  // namespace

TMoments::TSums& TMoments::TSums::operator+=(const TSums& o) {
  n += o.n, x += o.x, y += o.y, xx += o.xx, xy += o.xy, yy += o.yy, xz += o.xz, yz += o.yz, zz += o.zz;
  return *this;
}

TMoments::TSums& TMoments::TSums::operator-=(const TSums& o) {
  n -= o.n, x -= o.x, y -= o.y, xx -= o.xx, xy -= o.xy, yy -= o.yy, xz -= o.xz, yz -= o.yz, zz -= o.zz;
  return *this;
}

TMoments::TMoments(TView<double> xs, TView<double> ys, TView<double> weights, std::pmr::memory_resource* memory)
    : prefix(memory) {
  prefix.reserve(xs.size() + 1);
  prefix.emplace_back();
  if (xs.empty()) return;
  originX = 0.5 * (xs.front() + xs.back());
  for (const double y : ys) originY += y;
  originY /= static_cast<double>(ys.size());
  TSums sums;
  for (std::size_t i = 0; i < xs.size(); ++i) {
    const double w = weights[i];
    const double x = xs[i] - originX;
    const double y = ys[i] - originY;
    const double z = x * x + y * y;
    sums += {{w, w * x, w * y, w * x * x, w * x * y, w * y * y}, w * x * z, w * y * z, w * z * z};
    prefix.push_back(sums);
  }
}

TMoments::TSums TMoments::sumsOf(TSpan span) const {
  TSums sums = prefix[static_cast<std::size_t>(span.last)];
  return sums -= prefix[static_cast<std::size_t>(span.first)];
}

TLine lineOf(const TMomentSum& sums, cv::Point2d origin) {
  TLine line;
  if (!(sums.n > 0.0)) return line;
  const TCentral c = centralOf(sums);
  const double half = 0.5 * (c.xx - c.yy);
  const double root = std::sqrt(half * half + c.xy * c.xy);
  const double large = 0.5 * (c.xx + c.yy) + root;
  const bool isFlat = half >= 0.0;
  const double dx = isFlat ? half + root : c.xy;
  const double dy = isFlat ? c.xy : root - half;
  const double length = std::sqrt(dx * dx + dy * dy);
  if (length > 0.0) {
    const double perLength = (dx < 0.0 ? -1.0 : 1.0) / length;
    line.dx = dx * perLength;
    line.dy = dy * perLength;
  }
  line.x = c.meanX + origin.x;
  line.y = c.meanY + origin.y;
  line.weight = sums.n;
  line.spread = large * sums.n;
  line.variance = std::max(0.0, 0.5 * (c.xx + c.yy) - root);
  return line;
}

double varianceOf(const TMomentSum& sums) {
  if (!(sums.n > 0.0)) return 0.0;
  const TCentral c = centralOf(sums);
  const double half = 0.5 * (c.xx - c.yy);
  return std::max(0.0, 0.5 * (c.xx + c.yy) - std::sqrt(half * half + c.xy * c.xy));
}

double TMoments::residualOf(TSpan span) const {
  const TSums sums = sumsOf(span);
  return sums.n > 0.0 ? sums.n * varianceOf(sums) : 0.0;
}

std::optional<TCircle> TMoments::circleOf(const TSums& sums) const {
  if (!(sums.n >= 1e-6)) return std::nullopt;
  TCentral c = centralOf(sums);
  addCubics(sums, c);
  const double root = taubinRoot(c);
  const double det = root * root - root * c.z + (c.xx * c.yy - c.xy * c.xy);
  if (!(std::abs(det) > 1e-12 * c.z * c.z)) return std::nullopt;
  const double x = (c.xz * (c.yy - root) - c.yz * c.xy) / (2.0 * det);
  const double y = (c.yz * (c.xx - root) - c.xz * c.xy) / (2.0 * det);
  const double r2 = x * x + y * y + c.z;
  if (!(r2 > 0.0 && r2 < kLargestRadiusPx * kLargestRadiusPx)) return std::nullopt;
  // Mean square of (distance^2 - r^2) / 2r.
  const double algebraic =
      c.zz + 4.0 * (x * x * c.xx + y * y * c.yy) - 4.0 * (x * c.xz + y * c.yz) + 8.0 * x * y * c.xy - c.z * c.z;
  return TCircle{x + c.meanX + originX, y + c.meanY + originY, std::sqrt(r2),
                 std::max(0.0, algebraic) / (4.0 * r2), sums.n};
}

}  // namespace weld
