// The kernel of weighted_moments.h, written once in universal intrinsics and included by one source per
// instruction set. Four points are summed side by side whatever the processor can do: the same bits everywhere.
#pragma once

#include "support/kernels/weighted_moments.h"

#include <opencv2/core/hal/intrin.hpp>

#include <cstddef>

namespace weld {
namespace moments {
namespace {

using cv::v_float64;

constexpr int kPoints = 4;  // side by side
constexpr std::ptrdiff_t kLanes = v_float64::nlanes;
constexpr int kVectors = kPoints / v_float64::nlanes;
static_assert(kVectors * kLanes == kPoints, "points fill whole vectors");

struct TSums {
  v_float64 n[kVectors], x[kVectors], y[kVectors], xx[kVectors], xy[kVectors], yy[kVectors];
};

inline double total(const v_float64* sums) {
  double lanes[kPoints];
  for (int v = 0; v < kVectors; ++v) cv::v_store(lanes + v * kLanes, sums[v]);
  return (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]);
}

inline void addPoints(const double* x, const double* y, const double* weight, const TCubicCurve& c,
                      const v_float64& originX, const v_float64& originY, TSums& sums) {
  const v_float64 one = cv::vx_setall_f64(1.0);
  for (int v = 0; v < kVectors; ++v) {
    const v_float64 px = cv::vx_load(x + v * kLanes);
    const v_float64 py = cv::vx_load(y + v * kLanes);
    const v_float64 t = (px - cv::vx_setall_f64(c.fromX)) * cv::vx_setall_f64(c.perPx);
    const v_float64 bent = cv::vx_setall_f64(c.c2) + t * cv::vx_setall_f64(c.c3);
    const v_float64 row = cv::vx_setall_f64(c.c0) + t * (cv::vx_setall_f64(c.c1) + t * bent);
    const v_float64 off = (py - row) * cv::vx_setall_f64(c.cosine);
    const v_float64 u = cv::v_max(cv::vx_setzero_f64(), one - off * off * cv::vx_setall_f64(c.perLimit2));
    const v_float64 w = cv::vx_load(weight + v * kLanes) * u * u;
    const v_float64 dx = px - originX;
    const v_float64 dy = py - originY;
    const v_float64 wx = w * dx;
    const v_float64 wy = w * dy;
    sums.n[v] = sums.n[v] + w;
    sums.x[v] = sums.x[v] + wx;
    sums.y[v] = sums.y[v] + wy;
    sums.xx[v] = sums.xx[v] + wx * dx;
    sums.xy[v] = sums.xy[v] + wx * dy;
    sums.yy[v] = sums.yy[v] + wy * dy;
  }
}

TMomentSum sumNear(const TMomentPoints& points, const TCubicCurve& curve, double originX, double originY) {
  TSums sums;
  for (int v = 0; v < kVectors; ++v)
    sums.n[v] = sums.x[v] = sums.y[v] = sums.xx[v] = sums.xy[v] = sums.yy[v] = cv::vx_setzero_f64();
  const v_float64 ox = cv::vx_setall_f64(originX);
  const v_float64 oy = cv::vx_setall_f64(originY);
  int i = 0;
  for (; points.step == 1 && i + kPoints <= points.count; i += kPoints)
    addPoints(points.x + i, points.y + i, points.weight + i, curve, ox, oy, sums);
  while (i < points.count) {
    double x[kPoints] = {originX, originX, originX, originX};
    double y[kPoints] = {originY, originY, originY, originY};
    double weight[kPoints] = {};
    for (int k = 0; k < kPoints && i < points.count; ++k, i += points.step) {
      x[k] = points.x[i];
      y[k] = points.y[i];
      weight[k] = points.weight[i];
    }
    addPoints(x, y, weight, curve, ox, oy, sums);
  }
  return {total(sums.n), total(sums.x), total(sums.y), total(sums.xx), total(sums.xy), total(sums.yy)};
}

}  // namespace
}  // namespace moments
}  // namespace weld
