// Vectors of four lanes on every processor, multiplications and additions kept apart: the same bits everywhere.
#include "support/consensus.h"

#include <opencv2/core/hal/intrin.hpp>

#include <algorithm>
#include <cmath>

namespace zelFit {

namespace {

using cv::v_float32x4;

constexpr int kLanes = 4;
constexpr float kMinDeterminant = 1e-12F;

// 1 / (1 + slope^2) with the slope in image coordinates: turns squared row distances into perpendicular ones.
float perpendicularFactor(const TFitPoints& points, const TScaledLine& line) {
  const double slope = points.slopeOf(line);
  return static_cast<float>(1.0 / (1.0 + slope * slope));
}

v_float32x4 rowResidual(const TFitPoints& points, const TScaledLine& line, int i) {
  const v_float32x4 onLine = cv::v_setall_f32(line.slope) * cv::v_load(points.x() + i);
  return cv::v_load(points.y() + i) - onLine - cv::v_setall_f32(line.intercept);
}

float truncatedQuadratic(const TFitPoints& points, const TScaledLine& line, float tolPx) {
  const float factor = perpendicularFactor(points, line);
  const v_float32x4 limit = cv::v_setall_f32(tolPx * tolPx / factor);
  v_float32x4 sum = cv::v_setzero_f32();
  for (int i = 0; i < points.paddedCount(); i += kLanes) {
    const v_float32x4 residual = rowResidual(points, line, i);
    sum = sum + cv::v_min(residual * residual, limit);
  }
  float lanes[kLanes];
  cv::v_store(lanes, sum);
  return ((lanes[0] + lanes[1]) + (lanes[2] + lanes[3])) * factor;
}

std::optional<TScaledLine> lineThrough(const TFitPoints& points, int i, int j) {
  const float dx = points.x()[j] - points.x()[i];
  if (dx == 0.0F) return std::nullopt;
  const float slope = (points.y()[j] - points.y()[i]) / dx;
  return TScaledLine{slope, points.y()[i] - slope * points.x()[i]};
}

// Weighted sums of one least-squares step around the current line.
struct TNormalSums {
  float w = 0.0F;
  float wx = 0.0F;
  float wxx = 0.0F;
  float wr = 0.0F;
  float wxr = 0.0F;
};

float sumLanes(const v_float32x4& v) {
  float lanes[kLanes];
  cv::v_store(lanes, v);
  return (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]);
}

TNormalSums weighPoints(const TFitPoints& points, const TScaledLine& line, float cutOffPx) {
  const v_float32x4 scale = cv::v_setall_f32(perpendicularFactor(points, line) / (cutOffPx * cutOffPx));
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

std::optional<TScaledLine> findConsensusLine(const TFitPoints& points, const TFitPoints& scored, int sampleSize,
                                             double tolPx, const std::function<bool(double)>& isAdmissible) {
  const TFitPoints sample = points.subsample(sampleSize);
  std::optional<TScaledLine> best;
  float bestScore = 0.0F;
  for (int i = 0; i < sample.count(); ++i) {
    for (int j = i + 1; j < sample.count(); ++j) {
      const std::optional<TScaledLine> line = lineThrough(sample, i, j);
      if (!line || !isAdmissible(points.slopeOf(*line))) continue;
      const float score = truncatedQuadratic(scored, *line, static_cast<float>(tolPx));
      if (best && !(score < bestScore)) continue;
      best = line;
      bestScore = score;
    }
  }
  return best;
}

std::optional<TScaledLine> reweightLine(const TFitPoints& points, const TScaledLine& start, double cutOffPx) {
  const TNormalSums s = weighPoints(points, start, static_cast<float>(cutOffPx));
  const float determinant = s.w * s.wxx - s.wx * s.wx;
  if (!(determinant > kMinDeterminant * s.w * s.w)) return std::nullopt;
  const float slopeStep = (s.w * s.wxr - s.wx * s.wr) / determinant;
  const float interceptStep = (s.wxx * s.wr - s.wx * s.wxr) / determinant;
  return TScaledLine{start.slope + slopeStep, start.intercept + interceptStep};
}

double nearShare(const TFitPoints& points, const TScaledLine& line, double tolPx) {
  const auto limit = static_cast<float>(tolPx * tolPx / static_cast<double>(perpendicularFactor(points, line)));
  int near = 0;
  for (int i = 0; i < points.count(); ++i) {
    const float residual = points.y()[i] - line.slope * points.x()[i] - line.intercept;
    near += residual * residual < limit ? 1 : 0;
  }
  return static_cast<double>(near) / points.count();
}

}  // namespace zelFit
