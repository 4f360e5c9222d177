// The kernels of contrast_rows.h in universal intrinsics. Included by one source per instruction set.
#pragma once

#include "support/kernels/contrast_rows.h"

#include <opencv2/core/hal/intrin.hpp>

namespace weld {
namespace {
namespace contrast {

using cv::v_int16;
constexpr int kRowLanes = v_int16::nlanes;
static_assert(kRowLanes <= kLeastRowColumns, "a row must fill a vector");

// Runs over vectors of columns, the last one over some columns again: bodies give a column the same value twice.
template <typename TBody>
inline void overColumns(int columns, const TBody& body) {
  int x = 0;
  for (; x + kRowLanes <= columns; x += kRowLanes) body(x);
  if (x < columns) body(columns - kRowLanes);
}

inline v_int16 load(const short* values) {
  return cv::vx_load(values);
}

// Sums of strips leave a bit free.
inline v_int16 plus(const v_int16& a, const v_int16& b) {
  return cv::v_add_wrap(a, b);
}
inline v_int16 minus(const v_int16& a, const v_int16& b) {
  return cv::v_sub_wrap(a, b);
}

inline v_int16 magnitude(const v_int16& v) {
  return cv::v_max(v, minus(cv::vx_setzero_s16(), v));
}

void sumEight(const short* const* rows, int columns, short* sums) {
  overColumns(columns, [&](int x) {
    v_int16 sum = load(rows[0] + x);
    for (int r = 1; r < 8; ++r) sum = plus(sum, load(rows[r] + x));
    cv::v_store(sums + x, sum);
  });
}

void meanOfTwo(const short* values, int apart, int columns, short* means) {
  overColumns(columns, [&](int x) {
    cv::v_store(means + x, cv::v_shr<1>(plus(load(values + x), load(values + x + apart))));
  });
}

void respondDark(const short* left, const short* middle, const short* right, int columns, short* response) {
  overColumns(columns, [&](int x) {
    cv::v_store(response + x, minus(cv::v_min(load(left + x), load(right + x)), load(middle + x)));
  });
}

void respondBright(const short* left, const short* middle, const short* right, int columns, short* response) {
  overColumns(columns, [&](int x) {
    cv::v_store(response + x, minus(load(middle + x), cv::v_max(load(left + x), load(right + x))));
  });
}

void respondEdge(const short* const* sides, int columns, short* response) {
  overColumns(columns, [&](int x) {
    const v_int16 near = minus(load(sides[2] + x), load(sides[1] + x));
    const v_int16 rest = minus(minus(load(sides[3] + x), load(sides[0] + x)), near);
    cv::v_store(response + x, minus(near, cv::v_shr<1>(magnitude(rest))));
  });
}

int highest(const short* values, int columns) {
  v_int16 found = cv::vx_setzero_s16();
  overColumns(columns, [&](int x) { found = cv::v_max(found, load(values + x)); });
  return cv::v_reduce_max(found);
}

int sumMagnitudes(const short* values, int columns) {
  const v_int16 one = cv::vx_setall_s16(1);
  cv::v_int32 sums = cv::vx_setzero_s32();
  int x = 0;
  for (; x + kRowLanes <= columns; x += kRowLanes) sums = sums + cv::v_dotprod(magnitude(load(values + x)), one);
  int result = cv::v_reduce_sum(sums);
  for (; x < columns; ++x) result += values[x] > 0 ? values[x] : -values[x];
  return result;
}

void rate(const short* response, const unsigned short* factors, int most, int columns, short* evidence) {
  const v_int16 limit = cv::vx_setall_s16(static_cast<short>(most));
  overColumns(columns, [&](int x) {
    const cv::v_uint16 above = cv::v_reinterpret_as_u16(cv::v_max(load(response + x), cv::vx_setzero_s16()));
    const v_int16 rated = cv::v_reinterpret_as_s16(cv::v_mul_hi(above, cv::vx_load(factors + x)));
    cv::v_store(evidence + x, cv::v_min(cv::v_max(load(evidence + x), rated), limit));
  });
}

void advance(const TPathRows& before, const short* evidence, const TPathPrices& prices, int columns,
             short* scores) {
  const short* const same = before.same;
  const short* const lower = before.lower != nullptr ? before.lower : same;
  const short* const upper = before.upper != nullptr ? before.upper : same;
  const v_int16 slip = cv::vx_setall_s16(prices.slip);
  const v_int16 turn = cv::vx_setall_s16(prices.turn);
  const v_int16 price = cv::vx_setall_s16(prices.least);
  overColumns(columns, [&](int x) {
    const v_int16 slipped = minus(cv::v_max(load(same + x - 1), load(same + x + 1)), slip);
    const v_int16 turned = minus(cv::v_max(load(lower + x), load(upper + x)), turn);
    const v_int16 straight = cv::v_max(load(same + x), cv::vx_setzero_s16());
    const v_int16 best = cv::v_max(straight, cv::v_max(slipped, turned));
    cv::v_store(scores + x, minus(plus(best, load(evidence + x)), price));
  });
}

}  // namespace contrast
}  // namespace
}  // namespace weld
