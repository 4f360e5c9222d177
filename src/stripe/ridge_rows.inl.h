// The kernels of ridge_rows.h, written once in universal intrinsics and included by one source per instruction
// set.
#pragma once

#include "stripe/ridge_rows.h"

#include <opencv2/core/hal/intrin.hpp>

namespace weld {
namespace {

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

void halveRows(const short* upper, const short* lower, int columns, short* target) {
  const v_int16 one = cv::vx_setall_s16(1);
  int x = 0;
  for (; x + kLanes <= columns; x += kLanes) {
    cv::v_store(target + x, cv::v_shr<1>(cv::vx_load(upper + x) + cv::vx_load(lower + x) + one));
  }
  for (; x < columns; ++x) target[x] = static_cast<short>((upper[x] + lower[x] + 1) >> 1);
}

void halveBoth(const short* upper, const short* lower, int columns, short* target) {
  const v_int16 one = cv::vx_setall_s16(1);
  const auto sumOfFour = [&](int x) {
    return cv::v_dotprod(cv::vx_load(upper + x), one) + cv::v_dotprod(cv::vx_load(lower + x), one);
  };
  int x = 0;
  for (; x + 2 * kLanes <= columns; x += 2 * kLanes) {
    cv::v_store(target + x / 2, cv::v_rshr_pack<2>(sumOfFour(x), sumOfFour(x + kLanes)));
  }
  for (; x < columns; x += 2) {
    const int right = x + 1 < columns ? x + 1 : x;
    target[x / 2] = static_cast<short>((upper[x] + upper[right] + lower[x] + lower[right] + 2) >> 2);
  }
}

inline v_int16 sumOf(const short* const (&rows)[2], int x) {
  return cv::vx_load(rows[0] + x) + cv::vx_load(rows[1] + x);
}
inline int sumAt(const short* const (&rows)[2], int x) {
  return rows[0][x] + rows[1][x];
}

void respond(const TRidgeBoxes& boxes, int columns, short* response) {
  int x = 0;
  for (; x + kLanes <= columns; x += kLanes) {
    const v_int16 side = cv::v_max(sumOf(boxes.above, x), sumOf(boxes.below, x));
    cv::v_store(response + x, sumOf(boxes.upper, x) + sumOf(boxes.lower, x) - side - side);
  }
  for (; x < columns; ++x) {
    const int above = sumAt(boxes.above, x);
    const int below = sumAt(boxes.below, x);
    const int side = above > below ? above : below;
    response[x] = static_cast<short>(sumAt(boxes.upper, x) + sumAt(boxes.lower, x) - 2 * side);
  }
}

// Bit i of the mask is set where column x + i holds a maximum.
inline v_int16 isMaximum(const TRidgeRowTriple& rows, int x) {
  const v_int16 here = cv::vx_load(rows.here + x);
  return (here > cv::vx_load(rows.before + x)) & (here >= cv::vx_load(rows.after + x)) &
         (here >= cv::vx_load(rows.least + x));
}

static_assert(2 * kLanes <= 32, "a mask holds the maxima of two vectors");

int findMaxima(const TRidgeRowTriple& rows, int columns, int* found) {
  int count = 0;
  int x = 0;
  for (; x + 2 * kLanes <= columns; x += 2 * kLanes) {
    auto bits = static_cast<unsigned>(cv::v_signmask(cv::v_pack(isMaximum(rows, x), isMaximum(rows, x + kLanes))));
    if (bits == 0) continue;
    // Four at a time without asking whether there are as many: a branch per maximum would be guessed wrong.
    const int end = count + __builtin_popcount(bits);
    for (; count < end; count += kFoundMargin) {
      for (int i = 0; i < kFoundMargin; ++i, bits &= bits - 1) found[count + i] = x + __builtin_ctz(bits | kStop);
    }
    count = end;
  }
  for (; x < columns; ++x) {
    const short here = rows.here[x];
    if (here > rows.before[x] && here >= rows.after[x] && here >= rows.least[x]) found[count++] = x;
  }
  return count;
}

}  // namespace
}  // namespace weld
