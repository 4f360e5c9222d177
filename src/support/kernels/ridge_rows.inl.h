// The kernels of ridge_rows.h, written once in universal intrinsics and included by one source per instruction
// set.
#pragma once

#include "support/kernels/ridge_rows.h"

#include <opencv2/core/hal/intrin.hpp>

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

}  // namespace rows
}  // namespace
}  // namespace weld
