// The kernels of contrast_rows.h: plain loops where the compiler turns them into vector code, universal intrinsics
// where it does not. Included by one source per instruction set.
#pragma once

#include "support/kernels/contrast_rows.h"

#include <opencv2/core/hal/intrin.hpp>

namespace weld {
namespace {
namespace contrast {

inline int least(int a, int b) {
  return a < b ? a : b;
}
inline int most(int a, int b) {
  return a > b ? a : b;
}

void sumEight(const short* const* rows, int columns, short* __restrict sums) {
  const short* const a = rows[0];
  const short* const b = rows[1];
  const short* const c = rows[2];
  const short* const d = rows[3];
  const short* const e = rows[4];
  const short* const f = rows[5];
  const short* const g = rows[6];
  const short* const h = rows[7];
  for (int x = 0; x < columns; ++x)
    sums[x] = static_cast<short>(a[x] + b[x] + c[x] + d[x] + e[x] + f[x] + g[x] + h[x]);
}

void meanOfTwo(const short* values, int apart, int columns, short* __restrict means) {
  for (int x = 0; x < columns; ++x) {
    const auto sum = static_cast<short>(values[x] + values[x + apart]);  // sums of strips leave a bit free
    means[x] = static_cast<short>(sum >> 1);
  }
}

void respondDark(const short* left, const short* middle, const short* right, int columns,
                 short* __restrict response) {
  for (int x = 0; x < columns; ++x) response[x] = static_cast<short>(least(left[x], right[x]) - middle[x]);
}

void respondBright(const short* left, const short* middle, const short* right, int columns,
                   short* __restrict response) {
  for (int x = 0; x < columns; ++x) response[x] = static_cast<short>(middle[x] - most(left[x], right[x]));
}

void respondEdge(const short* const* sides, int columns, short* __restrict response) {
  const short* const farLeft = sides[0];
  const short* const left = sides[1];
  const short* const right = sides[2];
  const short* const farRight = sides[3];
  for (int x = 0; x < columns; ++x) {
    const auto near = static_cast<short>(right[x] - left[x]);
    const auto rest = static_cast<short>(farRight[x] - farLeft[x] - near);
    response[x] = static_cast<short>(near - (most(rest, -rest) >> 1));
  }
}

int highest(const short* values, int columns) {
  constexpr int kLanes = cv::v_int16::nlanes;
  cv::v_int16 found = cv::vx_setzero_s16();
  int x = 0;
  for (; x + kLanes <= columns; x += kLanes) found = cv::v_max(found, cv::vx_load(values + x));
  int result = cv::v_reduce_max(found);
  for (; x < columns; ++x) result = most(result, values[x]);
  return result;
}

int sumMagnitudes(const short* values, int columns) {
  constexpr int kLanes = cv::v_int16::nlanes;
  const cv::v_int16 one = cv::vx_setall_s16(1);
  cv::v_int32 sums = cv::vx_setzero_s32();
  int x = 0;
  for (; x + kLanes <= columns; x += kLanes) {
    const cv::v_int16 v = cv::vx_load(values + x);
    sums = sums + cv::v_dotprod(cv::v_max(v, cv::vx_setzero_s16() - v), one);
  }
  int result = cv::v_reduce_sum(sums);
  for (; x < columns; ++x) result += most(values[x], -values[x]);
  return result;
}

void rate(const short* response, int factor, int columns, short* __restrict evidence) {
  const auto share = static_cast<unsigned short>(factor);
  for (int x = 0; x < columns; ++x) {
    const auto above = static_cast<unsigned short>(most(response[x], 0));
    const auto rated = static_cast<short>((static_cast<unsigned>(above) * share) >> 16U);
    evidence[x] = static_cast<short>(most(evidence[x], rated));
  }
}

void advance(const TPathRows& before, const short* evidence, const TPathPrices& prices, int columns,
             short* __restrict scores) {
  const short* const same = before.same;
  const short* const lower = before.lower != nullptr ? before.lower : same;
  const short* const upper = before.upper != nullptr ? before.upper : same;
  const short slip = prices.slip;
  const short turn = prices.turn;
  const short price = prices.least;
  for (int x = 0; x < columns; ++x) {
    const auto slipped = static_cast<short>(most(same[x - 1], same[x + 1]) - slip);
    const auto turned = static_cast<short>(most(lower[x], upper[x]) - turn);
    const auto best = static_cast<short>(most(most(same[x], 0), most(slipped, turned)));
    scores[x] = static_cast<short>(best + evidence[x] - price);
  }
}

}  // namespace contrast
}  // namespace
}  // namespace weld
