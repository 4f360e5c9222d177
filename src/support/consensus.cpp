// Vectors of four lanes on every processor, multiplications and additions kept apart: the same bits everywhere.
#include "support/consensus.h"

#include "support/kernels/kernels.h"

#include <opencv2/core/hal/intrin.hpp>

#include <limits>

namespace zelFit {

namespace {

using cv::v_float32x4;

constexpr int kLanes = 4;
constexpr int kAcrossStep = 3;       // of the first points, those that lines across begin at
constexpr float kMinSpread = 1e-5F;  // smallest variance of the weighted columns, in squared half widths

// 1 / (1 + slope^2) with the slope in image coordinates: turns squared row distances into perpendicular ones.
float perpendicularFactor(const TFitPoints& points, float scaledSlope) {
  const float slope = scaledSlope * points.perScale();
  return 1.0F / (1.0F + slope * slope);
}

// Lines through one point and each of the next ones. A lane without a line, its two points being in one column,
// holds no number.
TLineBatch linesThrough(const TFitPoints& points, int i, int firstOther) {
  const float* const x = points.x();
  const float* const y = points.y();
  TLineBatch lines{};
  for (int lane = 0; lane < kRatedLines; ++lane) {
    const int j = firstOther + lane;
    lines.slope[lane] = (y[j] - y[i]) / (x[j] - x[i]);
    lines.intercept[lane] = y[i] - lines.slope[lane] * x[i];
    lines.factor[lane] = perpendicularFactor(points, lines.slope[lane]);
  }
  return lines;
}

// Weighted sums of one least-squares step around the current line.
struct TNormalSums {
  float w = 0.0F;
  float wx = 0.0F;
  float wxx = 0.0F;
  float wr = 0.0F;
  float wxr = 0.0F;
};

v_float32x4 rowResidual(const TFitPoints& points, const TScaledLine& line, int i) {
  const v_float32x4 onLine = cv::v_setall_f32(line.slope) * cv::v_load(points.x() + i);
  return cv::v_load(points.y() + i) - onLine - cv::v_setall_f32(line.intercept);
}

float sumLanes(const v_float32x4& v) {
  float lanes[kLanes];
  cv::v_store(lanes, v);
  return (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]);
}

TNormalSums weighPoints(const TFitPoints& points, const TScaledLine& line, float cutOffPx) {
  const v_float32x4 scale = cv::v_setall_f32(perpendicularFactor(points, line.slope) / (cutOffPx * cutOffPx));
  const v_float32x4 one = cv::v_setall_f32(1.0F);
  const v_float32x4 zero = cv::v_setzero_f32();
  v_float32x4 w = zero;
  v_float32x4 wx = zero;
  v_float32x4 wxx = zero;
  v_float32x4 wr = zero;
  v_float32x4 wxr = zero;
  for (int i = 0; i < points.paddedCount(); i += kLanes) {
    const v_float32x4 x = cv::v_load(points.x() + i);
    const v_float32x4 residual = rowResidual(points, line, i);
    const v_float32x4 remaining = cv::v_max(one - residual * residual * scale, zero);
    const v_float32x4 weight = remaining * remaining;
    const v_float32x4 weightedX = weight * x;
    w = w + weight;
    wx = wx + weightedX;
    wxx = wxx + weightedX * x;
    wr = wr + weight * residual;
    wxr = wxr + weightedX * residual;
  }
  return {sumLanes(w), sumLanes(wx), sumLanes(wxx), sumLanes(wr), sumLanes(wxr)};
}

}  // namespace

std::optional<TScaledLine> findConsensusLine(const TFitPoints& sample, const TFitPoints& scored, double tolPx,
                                             const TSlopeInterval& interval) {
  const TLineRating& rating = weld::kernels().lineRating;
  const TRatedPoints rated{scored.x(), scored.y(), scored.count()};
  const float tol = static_cast<float>(tolPx);
  std::optional<TScaledLine> best;
  float bestSum = std::numeric_limits<float>::max();
  for (int i = 0; i < sample.count(); ++i) {
    for (int j = i + 1; j < sample.count(); j += kRatedLines) {
      const TLineBatch lines = linesThrough(sample, i, j);
      float sums[kRatedLines];
      if (!rating.sumTruncatedQuadratics(rated, lines, tol * tol, bestSum, sums)) continue;
      for (int lane = 0; lane < kRatedLines && j + lane < sample.count(); ++lane) {
        const TScaledLine line{lines.slope[lane], lines.intercept[lane]};
        if (sample.x()[i] == sample.x()[j + lane] || !(sums[lane] < bestSum)) continue;
        if (!interval.contains(sample.slopeOf(line))) continue;
        best = line;
        bestSum = sums[lane];
      }
    }
  }
  return best;
}

std::optional<TScaledLine> findLineAcross(const TFitPoints& points, double tolPx) {
  const int lastBatch = points.count() - kRatedLines;
  if (lastBatch < kRatedLines) return std::nullopt;
  const float squaredTol = static_cast<float>(tolPx) * static_cast<float>(tolPx);
  const TRatedPoints rated{points.x(), points.y(), points.count()};
  const TLineRating& rating = weld::kernels().lineRating;
  std::optional<TScaledLine> best;
  float bestSum = squaredTol * static_cast<float>(points.count());
  for (int i = 0; i < kRatedLines; i += kAcrossStep) {
    const TLineBatch lines = linesThrough(points, i, lastBatch);
    float sums[kRatedLines];
    if (!rating.sumTruncatedQuadratics(rated, lines, squaredTol, bestSum, sums)) continue;
    for (int lane = 0; lane < kRatedLines; ++lane) {
      if (points.x()[i] == points.x()[lastBatch + lane] || !(sums[lane] < bestSum)) continue;
      best = TScaledLine{lines.slope[lane], lines.intercept[lane]};
      bestSum = sums[lane];
    }
  }
  return best;
}

std::optional<TScaledLine> reweightLine(const TFitPoints& points, const TScaledLine& start, double cutOffPx,
                                        const TSlopeInterval& interval) {
  const TNormalSums s = weighPoints(points, start, static_cast<float>(cutOffPx));
  const float determinant = s.w * s.wxx - s.wx * s.wx;
  if (!(determinant > kMinSpread * s.w * s.w)) return std::nullopt;
  TScaledLine next = start;
  next.slope += (s.w * s.wxr - s.wx * s.wr) / determinant;
  const double slope = points.slopeOf(next);
  if (!interval.contains(slope)) next.slope = points.scaleSlope(interval.clamp(slope));
  next.intercept += (s.wr - (next.slope - start.slope) * s.wx) / s.w;
  return next;
}

TSupport measureSupport(const TFitPoints& points, const TScaledLine& line, double tolPx) {
  const auto tol = static_cast<float>(tolPx);
  const v_float32x4 limit = cv::v_setall_f32(tol * tol / perpendicularFactor(points, line.slope));
  const v_float32x4 one = cv::v_setall_f32(1.0F);
  const v_float32x4 high = cv::v_setall_f32(std::numeric_limits<float>::max());
  const v_float32x4 low = cv::v_setall_f32(std::numeric_limits<float>::lowest());
  v_float32x4 count = cv::v_setzero_f32();
  v_float32x4 left = high;
  v_float32x4 right = low;
  v_float32x4 top = high;
  v_float32x4 bottom = low;
  for (int i = 0; i < points.paddedCount(); i += kLanes) {
    const v_float32x4 x = cv::v_load(points.x() + i);
    const v_float32x4 y = cv::v_load(points.y() + i);
    const v_float32x4 residual = rowResidual(points, line, i);
    const v_float32x4 isNear = residual * residual < limit;
    count = count + (one & isNear);
    left = cv::v_min(left, cv::v_select(isNear, x, high));
    right = cv::v_max(right, cv::v_select(isNear, x, low));
    top = cv::v_min(top, cv::v_select(isNear, y, high));
    bottom = cv::v_max(bottom, cv::v_select(isNear, y, low));
  }
  const float columns = (cv::v_reduce_max(right) - cv::v_reduce_min(left)) / points.perScale();
  return {static_cast<int>(sumLanes(count)), columns, cv::v_reduce_max(bottom) - cv::v_reduce_min(top)};
}

}  // namespace zelFit
