// Kernel that finds the edges of a strip and pairs them.
#pragma once

#include "support/kernels/edge_ranking.inl.h"

namespace weld {
namespace {

constexpr int kNever = 0x7fffffff;
constexpr int kClusterRows = 128;  // in which pairs are weighed together
constexpr int kLongAgo = 200;      // rows since a rising edge that can no longer be paired

// Decides which edges of one kind are among the strongest, the earlier ones of equal strength.
class TStrongestFilter {
public:
  explicit TStrongestFilter(const TEdgesOfKind& edges)
      : weakest(edges.strongest[kPairedEdges - 1]), placesForWeakest(lanesOf(0)) {
    for (const v_int16& edge : edges.strongest) placesForWeakest = placesForWeakest - (edge == weakest);
    placesForWeakest = placesForWeakest & (weakest > lanesOf(0));
  }

  // Lanes whose edge is kept; 0 is no edge.
  v_int16 keep(const v_int16& edge) {
    const v_int16 isTied = (edge == weakest) & (placesForWeakest > lanesOf(0));
    placesForWeakest = placesForWeakest + isTied;
    return (edge > weakest) | isTied;
  }

private:
  v_int16 weakest;
  v_int16 placesForWeakest;
};

// The pairs of a group. The first one of every column is kept in lanes: as a rule it is the only one.
struct TGroupPairs {
  v_int16 hasFirst = lanesOf(0);
  v_int32 low[2] = {cv::vx_setzero_s32(), cv::vx_setzero_s32()};
  v_int32 high[2] = {cv::vx_setzero_s32(), cv::vx_setzero_s32()};
};

// A column's first pair.
inline void recordFirst(int row, const v_int16& isFirst, const v_int16& age, TGroupPairs& group) {
  v_int32 mask[2];
  v_int32 ages[2];
  cv::v_expand(isFirst, mask[0], mask[1]);
  cv::v_expand(age, ages[0], ages[1]);
  const v_int32 high = cv::vx_setall_s32(row);
  for (int half = 0; half < 2; ++half) {
    group.low[half] = cv::v_select(mask[half], high - ages[half], group.low[half]);
    group.high[half] = cv::v_select(mask[half], high, group.high[half]);
  }
  group.hasFirst = group.hasFirst | isFirst;
}

// Pairs of columns that have one. Returns the largest number of pairs that a column has by then.
inline int recordMore(int row, const v_int16& isPair, const v_int16& age, int firstColumn, TStripPairs& pairs) {
  std::int16_t ages[kLanes];
  cv::v_store(ages, age);
  int most = 0;
  for (unsigned lanes = static_cast<unsigned>(cv::v_signmask(isPair)); lanes != 0; lanes &= lanes - 1) {
    const int lane = __builtin_ctz(lanes);
    const int column = firstColumn + lane;
    const int index = pairs.count[column]++;
    pairs.low[index][column] = row - ages[lane];
    pairs.high[index][column] = row;
    most = larger(most, pairs.count[column]);
  }
  return most;
}

// Walks down the edges and pairs every falling edge with a rising one right before it. Returns the largest
// number of pairs in a column.
inline int pairGroup(const TEdgeRow* buffer, const TGroupEdges& found, int firstColumn, TStripPairs& pairs) {
  TStrongestFilter risingFilter(found.rising);
  TStrongestFilter fallingFilter(found.falling);
  const v_int16 longAgo = lanesOf(kLongAgo);
  TGroupPairs group;
  v_int16 age = longAgo;  // rows since the last edge when that was a rising one
  int previousRow = 0;
  int most = 1;
  cv::v_store(pairs.count + firstColumn, cv::vx_setall_s32(1));
  cv::v_store(pairs.count + firstColumn + v_int32::nlanes, cv::vx_setall_s32(1));
  for (int i = 0; i < found.rows; ++i) {
    const int row = buffer[i].row;
    age = cv::v_min(age + lanesOf(smaller(row - previousRow, kLongAgo)), longAgo);
    previousRow = row;
    const v_int16 edges = cv::vx_load(buffer[i].edges);
    const v_int16 isRising = risingFilter.keep(edges);
    const v_int16 isFalling = fallingFilter.keep(lanesOf(0) - edges);
    const v_int16 isPair = isFalling & (age > lanesOf(kMinPairPx)) & (age < lanesOf(kMaxPairPx));
    if (cv::v_check_any(isPair)) {
      const v_int16 isLater = isPair & group.hasFirst;
      if (cv::v_check_any(isLater)) most = larger(most, recordMore(row, isLater, age, firstColumn, pairs));
      recordFirst(row, isPair & ~group.hasFirst, age, group);
    }
    age = cv::v_select(isRising, lanesOf(0), cv::v_select(isFalling, longAgo, age));
  }
  v_int32 hasPair[2];
  cv::v_expand(group.hasFirst, hasPair[0], hasPair[1]);
  for (int half = 0; half < 2; ++half) {
    const int lanes = firstColumn + half * v_int32::nlanes;
    cv::v_store(pairs.low[0] + lanes, group.low[half]);
    cv::v_store(pairs.high[0] + lanes, group.high[half]);
    cv::v_store(pairs.count + lanes, cv::vx_load(pairs.count + lanes) & hasPair[half]);
  }
  return cv::v_check_any(group.hasFirst) ? most : 0;
}

// Sums of grey values and their moments about the first row, of one pair per column.
struct TWeights {
  v_int32 sum[2] = {cv::vx_setzero_s32(), cv::vx_setzero_s32()};  // left and right half of the columns
  v_int32 moment[2] = {cv::vx_setzero_s32(), cv::vx_setzero_s32()};
};

// The first row of some columns.
struct TPixels {
  const unsigned char* first;
  std::size_t step;
};

// Adds pairs that lie in the rows 0 .. rows - 1. low and high are their first and one past their last row, both
// 0 in columns without a pair.
inline void weighCluster(const TPixels& pixels, int rows, const v_int16& low, const v_int16& high,
                         TWeights& weights) {
  const auto greyInside = [&](int row) {
    const v_int16 at = lanesOf(row);
    return loadRow(pixels.first + row * pixels.step) & (at >= low) & (at < high);
  };
  v_int16 sum = lanesOf(0);
  for (int row = 0; row < rows; row += 2) {
    const v_int16 even = greyInside(row);
    const v_int16 odd = greyInside(row + 1);
    const v_int16 arms = cv::v_reinterpret_as_s16(cv::vx_setall_s32(row | (row + 1) << 16));
    v_int16 left;
    v_int16 right;
    cv::v_zip(even, odd, left, right);
    weights.moment[0] = weights.moment[0] + cv::v_dotprod(left, arms);
    weights.moment[1] = weights.moment[1] + cv::v_dotprod(right, arms);
    sum = sum + even + odd;
  }
  v_int32 wideSum[2];
  v_int32 sumTimesLow[2];
  cv::v_expand(sum, wideSum[0], wideSum[1]);
  cv::v_mul_expand(sum, low, sumTimesLow[0], sumTimesLow[1]);
  for (int half = 0; half < 2; ++half) {
    weights.sum[half] = weights.sum[half] + wideSum[half];
    weights.moment[half] = weights.moment[half] - sumTimesLow[half];
  }
}

// Ties to even on every processor; v_round alone takes them away from zero on ARM.
inline cv::v_float64 nearestWhole(const cv::v_float64& row) {
  const cv::v_float64 noFraction = cv::vx_setall_f64(6755399441055744.0);  // 1.5 * 2^52
  return (row + noFraction) - noFraction;
}

// Exact up to the rounding: a row times a sum is far below 2^53.
inline v_int32 centroid(const v_int32& low, const v_int32& sum, const v_int32& moment) {
  using cv::v_cvt_f64;
  using cv::v_cvt_f64_high;
  const cv::v_float64 first = (v_cvt_f64(low) * v_cvt_f64(sum) + v_cvt_f64(moment)) / v_cvt_f64(sum);
  const cv::v_float64 second =
      (v_cvt_f64_high(low) * v_cvt_f64_high(sum) + v_cvt_f64_high(moment)) / v_cvt_f64_high(sum);
  const v_int32 isBlack = sum == cv::vx_setzero_s32();
  return cv::v_select(isBlack, cv::vx_setall_s32(-1), cv::v_round(nearestWhole(first), nearestWhole(second)));
}

// Centres of the pairs with one index. Those of neighbouring columns lie side by side as a rule, and are weighed
// together.
inline void weighPairs(const unsigned char* column, std::size_t step, int x, int index, TStripPairs& pairs) {
  v_int32 low[2];
  v_int32 high[2];
  v_int32 isWaiting[2];
  for (int half = 0; half < 2; ++half) {
    const int lanes = x + half * v_int32::nlanes;
    low[half] = cv::vx_load(pairs.low[index] + lanes);
    high[half] = cv::vx_load(pairs.high[index] + lanes);
    isWaiting[half] = cv::vx_load(pairs.count + lanes) > cv::vx_setall_s32(index);
  }
  TWeights weights;
  while (cv::v_check_any(isWaiting[0] | isWaiting[1])) {
    const v_int32 never = cv::vx_setall_s32(kNever);
    const int first = cv::v_reduce_min(
        cv::v_min(cv::v_select(isWaiting[0], low[0], never), cv::v_select(isWaiting[1], low[1], never)));
    v_int32 relativeLow[2];
    v_int32 relativeHigh[2];
    for (int half = 0; half < 2; ++half) {
      const v_int32 isMember = isWaiting[half] & (high[half] <= cv::vx_setall_s32(first + kClusterRows));
      relativeLow[half] = (low[half] - cv::vx_setall_s32(first)) & isMember;
      relativeHigh[half] = (high[half] - cv::vx_setall_s32(first)) & isMember;
      isWaiting[half] = isWaiting[half] & ~isMember;
    }
    const int rows = cv::v_reduce_max(cv::v_max(relativeHigh[0], relativeHigh[1]));
    weighCluster({column + first * step, step}, rows, cv::v_pack(relativeLow[0], relativeLow[1]),
                 cv::v_pack(relativeHigh[0], relativeHigh[1]), weights);
  }
  for (int half = 0; half < 2; ++half) {
    const int lanes = x + half * v_int32::nlanes;
    cv::v_store(pairs.centre[index] + lanes,
                centroid(cv::vx_load(pairs.low[index] + lanes), weights.sum[half], weights.moment[half]));
  }
}

void pairStripeEdges(const TScanArea& area, const TBlockMarks& marks, int strip, TEdgeRow* buffer,
                     TStripPairs& pairs) {
  const std::uint64_t* const ofStrip = marks.words + static_cast<std::ptrdiff_t>(strip) * marks.wordsPerStrip;
  for (int x = 0; x < kStripColumns; x += kLanes) {
    const unsigned char* column = area.pixels + columnOf(area, strip) + x;
    const TGroupEdges found = findMarkedEdges({area, column}, ofStrip, marks.wordsPerStrip, buffer);
    const v_int16 hasBoth = (found.rising.counts > lanesOf(0)) & (found.falling.counts > lanesOf(0));
    cv::v_store(pairs.hasBothEdges + x, hasBoth);
    if (!cv::v_check_any(hasBoth)) {
      for (int lane = 0; lane < kLanes; ++lane) pairs.count[x + lane] = 0;
      continue;
    }
    const int most = pairGroup(buffer, found, x, pairs);
    for (int index = 0; index < most; ++index) weighPairs(column, area.step, x, index, pairs);
  }
}

}  // namespace
}  // namespace weld
