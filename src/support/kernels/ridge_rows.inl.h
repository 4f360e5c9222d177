// The kernels of ridge_rows.h, written once in universal intrinsics and included by one source per instruction
// set.
#pragma once

#include "support/kernels/ridge_rows.h"

#include <opencv2/core/hal/intrin.hpp>

#include <cstddef>

namespace weld {
namespace {
namespace rows {

using cv::v_int16;
using cv::v_uint16;
using cv::v_uint8;

constexpr int kLanes = v_int16::nlanes;
constexpr unsigned kStop = 1U << 31;  // a bit that keeps the count of zeros defined
constexpr int kPairShift = 2;         // two pixels to one value
static_assert(2 << kPairShift == kRidgeLevelUnit, "the sum of two pixels");

void pairColumns(const unsigned char* source, int columns, short* target) {
  const v_uint16 lowByte = cv::vx_setall_u16(0xFF);
  int x = 0;
  for (; x + 2 * kLanes <= columns; x += 2 * kLanes) {
    const v_uint16 pairs = cv::v_reinterpret_as_u16(cv::vx_load(source + x));
    const v_uint16 sums = (pairs & lowByte) + cv::v_shr<8>(pairs);
    cv::v_store(target + x / 2, cv::v_reinterpret_as_s16(cv::v_shl<kPairShift>(sums)));
  }
  for (; x < columns; x += 2) {
    const int right = source[x + 1 < columns ? x + 1 : x];
    target[x / 2] = static_cast<short>((source[x] + right) << kPairShift);
  }
}

void addRows(const short* a, const short* b, int columns, short* target) {
  int x = 0;
  for (; x + kLanes <= columns; x += kLanes) cv::v_store(target + x, cv::vx_load(a + x) + cv::vx_load(b + x));
  for (; x < columns; ++x) target[x] = static_cast<short>(a[x] + b[x]);
}

void halveSums(const short* sums, int columns, short* target) {
  const v_int16 one = cv::vx_setall_s16(1);
  int x = 0;
  for (; x + kLanes <= columns; x += kLanes) cv::v_store(target + x, cv::v_shr<1>(cv::vx_load(sums + x) + one));
  for (; x < columns; ++x) target[x] = static_cast<short>((sums[x] + 1) >> 1);
}

void halveSumsAndColumns(const short* sums, int columns, short* target) {
  const v_int16 one = cv::vx_setall_s16(1);
  const auto sumOfFour = [&](int x) { return cv::v_dotprod(cv::vx_load(sums + x), one); };
  int x = 0;
  for (; x + 2 * kLanes <= columns; x += 2 * kLanes) {
    cv::v_store(target + x / 2, cv::v_rshr_pack<2>(sumOfFour(x), sumOfFour(x + kLanes)));
  }
  for (; x < columns; x += 2) {
    const int right = x + 1 < columns ? x + 1 : x;
    target[x / 2] = static_cast<short>((sums[x] + sums[right] + 2) >> 2);
  }
}

void respond(const TRidgeBoxes& boxes, int columns, short* response) {
  int x = 0;
  for (; x + kLanes <= columns; x += kLanes) {
    const v_int16 side = cv::v_max(cv::vx_load(boxes.above + x), cv::vx_load(boxes.below + x));
    cv::v_store(response + x, cv::vx_load(boxes.upper + x) + cv::vx_load(boxes.lower + x) - side - side);
  }
  for (; x < columns; ++x) {
    const int side = boxes.above[x] > boxes.below[x] ? boxes.above[x] : boxes.below[x];
    response[x] = static_cast<short>(boxes.upper[x] + boxes.lower[x] - 2 * side);
  }
}

inline v_int16 counts(const TRidgeRowTriple& rows, int x) {
  return cv::vx_load(rows.here + x) >= cv::vx_load(rows.least + x);
}

// Bit i of the mask is set where column x + i holds a maximum.
inline v_int16 isMaximum(const TRidgeRowTriple& rows, int x) {
  const v_int16 here = cv::vx_load(rows.here + x);
  return (here > cv::vx_load(rows.before + x)) & (here >= cv::vx_load(rows.after + x)) &
         (here >= cv::vx_load(rows.least + x));
}

static_assert(2 * kLanes <= 32, "a mask holds the maxima of two vectors");

// Bit i stands for column x + i of two vectors.
inline unsigned maximaFrom(const TRidgeRowTriple& rows, int x) {
  return static_cast<unsigned>(cv::v_signmask(cv::v_pack(isMaximum(rows, x), isMaximum(rows, x + kLanes))));
}

int findMaxima(const TRidgeRowTriple& rows, int columns, int* found) {
  int count = 0;
  int x = 0;
  for (; x + 2 * kLanes <= columns; x += 2 * kLanes) {
    if (!cv::v_check_any(counts(rows, x) | counts(rows, x + kLanes))) continue;
    unsigned bits = maximaFrom(rows, x);
    // Four at a time without asking whether there are as many: a branch per maximum would be guessed wrong.
    const int end = count + __builtin_popcount(bits);
    do {
      for (int i = 0; i < kFoundMargin; ++i, bits &= bits - 1) found[count + i] = x + __builtin_ctz(bits | kStop);
      count += kFoundMargin;
    } while (count < end);
    count = end;
  }
  if (x > 0 && x < columns) {
    // Together with columns that have been seen.
    unsigned bits = maximaFrom(rows, columns - 2 * kLanes) >> (x + 2 * kLanes - columns);
    for (; bits != 0; bits &= bits - 1) found[count++] = x + __builtin_ctz(bits);
    return count;
  }
  for (; x < columns; ++x) {
    const short here = rows.here[x];
    if (here > rows.before[x] && here >= rows.after[x] && here >= rows.least[x]) found[count++] = x;
  }
  return count;
}

constexpr int kNewtonSteps = 2;
constexpr int kDoubles = cv::v_float64::nlanes;
static_assert(kCorrelated % kDoubles == 0, "profiles fill whole vectors");

// The bins of one profile that a step reads.
struct TBins {
  const int* sums = nullptr;  // at the first row
  int first = 0;
  int rows = 0;
  int count = 0;

  TBins() = default;
  TBins(const TRidgeProfiles& p, int lane, double centre) : rows(p.binRows[lane]) {
    if (rows == 0) return;
    const double top = __builtin_ceil(centre - p.halfSupport[lane]);
    const double bottom = __builtin_floor(centre + p.halfSupport[lane]);
    first = static_cast<int>(top) > p.firstRow[lane] ? static_cast<int>(top) : p.firstRow[lane];
    const int last = static_cast<int>(bottom) < p.lastRow[lane] ? static_cast<int>(bottom) : p.lastRow[lane];
    if (last < first) return;
    sums = p.sums[lane] + (first - p.firstRow[lane]);
    count = (last - first + 1) / rows;
  }
};

// In registers: a vector cannot be loaded soon after its lanes were stored.
template <int lanes, typename TValueOf>
inline cv::v_float64 gather(const TValueOf& valueOf) {
  if constexpr (lanes == 4) {
    return cv::v_float64(valueOf(0), valueOf(1), valueOf(2), valueOf(3));
  } else {
    return cv::v_float64(valueOf(0), valueOf(1));
  }
}

// Slope and curvature of the correlation of as many profiles as a vector has lanes, from `lane` on.
inline void slopesOf(const TRidgeProfiles& p, int lane, const double* centres, double* slopes,
                     double* curvatures) {
  TBins bins[kDoubles];
  int most = 0;
  for (int i = 0; i < kDoubles; ++i) {
    bins[i] = TBins(p, lane + i, centres[i]);
    most = bins[i].count > most ? bins[i].count : most;
  }
  const cv::v_float64 one = cv::vx_setall_f64(1.0);
  const cv::v_float64 five = cv::vx_setall_f64(5.0);
  const cv::v_float64 centre = cv::vx_load(centres);
  const cv::v_float64 support = cv::vx_load(p.halfSupport + lane);
  const cv::v_float64 half = gather<kDoubles>([&](int i) { return (bins[i].rows - 1) / 2.0; });
  const cv::v_float64 back = gather<kDoubles>([&](int i) { return bins[i].rows * p.back[lane + i]; });
  const cv::v_float64 step = gather<kDoubles>([&](int i) { return static_cast<double>(bins[i].rows); });
  const cv::v_float64 count = gather<kDoubles>([&](int i) { return static_cast<double>(bins[i].count); });
  cv::v_float64 row = gather<kDoubles>([&](int i) { return static_cast<double>(bins[i].first); });
  cv::v_float64 done = cv::vx_setzero_f64();
  cv::v_float64 slope = cv::vx_setzero_f64();
  cv::v_float64 curvature = cv::vx_setzero_f64();
  for (int bin = 0; bin < most; ++bin, row = row + step, done = done + one) {
    const cv::v_float64 sum = gather<kDoubles>([&](int i) {
      const TBins& b = bins[i];
      if (bin >= b.count) return 0.0;
      const int* const at = b.sums + static_cast<std::ptrdiff_t>(bin) * b.rows;
      return static_cast<double>(at[b.rows] - at[0]);
    });
    const cv::v_float64 isIn = done < count;
    const cv::v_float64 u = (row + half - centre) / support;
    const cv::v_float64 rest = one - u * u;
    const cv::v_float64 height = sum - back;
    slope = slope + (height * u * rest * rest & isIn);
    curvature = curvature + (height * rest * (one - five * u * u) & isIn);
  }
  cv::v_store(slopes, slope);
  cv::v_store(curvatures, curvature);
}

void correlate(const TRidgeProfiles& p, double* centres) {
  for (int lane = 0; lane < kCorrelated; lane += kDoubles) {
    double* const own = centres + lane;
    bool isLost[kDoubles] = {};
    for (int i = 0; i < kDoubles; ++i) own[i] = p.start[lane + i];
    for (int step = 0; step < kNewtonSteps; ++step) {
      double slopes[kDoubles];
      double curvatures[kDoubles];
      slopesOf(p, lane, own, slopes, curvatures);
      for (int i = 0; i < kDoubles; ++i) {
        isLost[i] = isLost[i] || !(curvatures[i] > 0.0);
        if (isLost[i]) continue;
        const double support = p.halfSupport[lane + i];
        const double shift = support * slopes[i] / curvatures[i];
        const double most = support / 4;
        own[i] += shift < -most ? -most : (most < shift ? most : shift);
      }
    }
    for (int i = 0; i < kDoubles; ++i) {
      const double start = p.start[lane + i];
      const double off = own[i] < start ? start - own[i] : own[i] - start;
      if (isLost[i] || !(off < p.halfSupport[lane + i] / 2)) own[i] = start;
    }
  }
}

}  // namespace rows
}  // namespace
}  // namespace weld
