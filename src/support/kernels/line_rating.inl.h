// The kernel of line_rating.h, written once in universal intrinsics and included by one source per instruction
// set. Multiplications and additions stay apart and every line has a lane of its own: the same bits everywhere.
#pragma once

#include "support/kernels/line_rating.h"

#include <opencv2/core/hal/intrin.hpp>

#include <cstddef>

namespace zelFit {
namespace {

using cv::v_float32;

constexpr int kPointsPerLook = 8;  // between two looks whether the lines are still in the race
constexpr std::ptrdiff_t kLanes = v_float32::nlanes;
constexpr int kVectors = kRatedLines / kLanes;
static_assert(kVectors * kLanes == kRatedLines, "lines fill whole vectors");

// Lines of a batch, and what they have summed up.
struct TRatedBatch {
  v_float32 slope[kVectors];
  v_float32 intercept[kVectors];
  v_float32 factor[kVectors];
  v_float32 sum[kVectors];
};

inline void addPoint(float pointX, float pointY, const v_float32& limit, TRatedBatch& batch) {
  const v_float32 x = cv::vx_setall_f32(pointX);
  const v_float32 y = cv::vx_setall_f32(pointY);
  for (int v = 0; v < kVectors; ++v) {
    const v_float32 residual = y - batch.slope[v] * x - batch.intercept[v];
    batch.sum[v] = batch.sum[v] + cv::v_min(residual * residual * batch.factor[v], limit);
  }
}

inline bool haveAllReached(const v_float32& sumLimit, const TRatedBatch& batch) {
  bool haveAll = true;
  for (int v = 0; v < kVectors; ++v) haveAll = haveAll && cv::v_check_all(batch.sum[v] >= sumLimit);
  return haveAll;
}

bool sumTruncatedQuadratics(const TRatedPoints& points, const TLineBatch& lines, float squaredTol, float sumLimit,
                            float* sums) {
  TRatedBatch batch;
  for (int v = 0; v < kVectors; ++v) {
    batch.slope[v] = cv::vx_load(lines.slope + v * kLanes);
    batch.intercept[v] = cv::vx_load(lines.intercept + v * kLanes);
    batch.factor[v] = cv::vx_load(lines.factor + v * kLanes);
    batch.sum[v] = cv::vx_setzero_f32();
  }
  const v_float32 limit = cv::vx_setall_f32(squaredTol);
  const v_float32 enough = cv::vx_setall_f32(sumLimit);
  int i = 0;
  while (i + kPointsPerLook <= points.count) {
    for (int n = 0; n < kPointsPerLook; ++n, ++i) addPoint(points.x[i], points.y[i], limit, batch);
    if (haveAllReached(enough, batch)) return false;
  }
  for (; i < points.count; ++i) addPoint(points.x[i], points.y[i], limit, batch);
  for (int v = 0; v < kVectors; ++v) cv::v_store(sums + v * kLanes, batch.sum[v]);
  return !haveAllReached(enough, batch);
}

}  // namespace
}  // namespace zelFit
