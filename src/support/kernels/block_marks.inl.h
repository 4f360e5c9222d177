// Kernel that tells the blocks that may hold an edge.
#pragma once

#include "support/kernels/kernel_lanes.inl.h"

namespace weld {
namespace {

constexpr int kSampledRowPx = 64;  // distance of the rows that tell the brightness of the background

constexpr int kFirstCacheBytes = 32 * 1024;  // at least, as a rule
constexpr int kInFirstCache = 3;
constexpr int kInSecondCache = 2;

constexpr int kPairColumns = 2 * kStripColumns;  // two strips fill the lines of a cache
static_assert(kPairColumns == 64, "a step through a row takes whole lines");

// Any pixel of the rows at or above the threshold.
template <int columns>
inline bool isBright(const unsigned char* block, std::size_t step, int rows, const v_uint8& threshold) {
  v_uint8 brightest = cv::vx_setzero_u8();
  for (int row = 0; row < rows; ++row, block += step) {
    for (int x = 0; x < columns; x += kBytes) brightest = cv::v_max(brightest, cv::vx_load(block + x));
  }
  return cv::v_check_any(brightest >= threshold);
}

// Any step over 5 rows among those that the box sums of the block's rows are made of. An edge needs one
// above the threshold, since the box difference is the sum of five. In noise the first rows have one.
inline bool hasStep(const unsigned char* block, std::size_t step, int rows, const v_uint8& leastStep) {
  v_uint8 largest = cv::vx_setzero_u8();
  const auto isIn = [&](int first, int end) {
    for (int row = first; row < end; ++row) {
      const unsigned char* here = block + row * step;
      for (int x = 0; x < kStripColumns; x += kBytes)
        largest = cv::v_max(largest, cv::v_absdiff(cv::vx_load(here + x), cv::vx_load(here - kBoxPx * step + x)));
    }
    return cv::v_check_any(largest >= leastStep);
  };
  return isIn(0, kBoxPx - 1) || isIn(kBoxPx - 1, rows + kBoxPx - 1);
}

// Asks for a block: no prefetcher of the processor guesses those below on a walk along the rows. What lies below
// the area, whose pixels nobody wants, is left where it is.
template <int locality>
inline void prefetch(const unsigned char* block, std::size_t step, int rows) {
  for (int row = 0; row < rows; ++row, block += step) __builtin_prefetch(block, 0, locality);
}

// What an edge needs, of which markBlocks tells the blocks that have it.
struct TEdgeNeeds {
  v_uint8 threshold;
  v_uint8 leastStep;
  bool isBackgroundBright;  // then more blocks lack a step than lack a bright pixel
};

// Judged by a few rows.
inline bool isBackgroundBright(const TScanArea& area, const v_uint8& threshold) {
  int bright = 0;
  int all = 0;
  for (int row = kBoxPx; row < area.rows - kBoxPx; row += kSampledRowPx) {
    for (int strip = 0; strip < area.strips; ++strip, ++all) {
      const unsigned char* const at = area.pixels + row * area.step + columnOf(area, strip);
      bright += isBright<kStripColumns>(at, area.step, 1, threshold) ? 1 : 0;
    }
  }
  return 2 * bright > all;
}

// The strips of one row of blocks, two at a time. As a template argument the number of rows unrolls the loops; 0
// is as many as there are.
template <int usualRows, int locality>
inline void markBlockRow(const TScanArea& area, int row, int end, const TEdgeNeeds& needs,
                         const TBlockMarks& marks) {
  const int rows = usualRows > 0 ? usualRows : end - row;
  const int rowsToCome = smaller(rows, end - row - rows);
  const int index = (row - kBoxPx) / kBlockRows;
  const std::uint64_t bit = std::uint64_t{1} << (index % kMarkBits);
  std::uint64_t* word = marks.words + index / kMarkBits;
  const unsigned char* line = area.pixels + row * area.step;
  const auto markEdges = [&](int strip) {
    const unsigned char* const block = line + columnOf(area, strip);
    if (!hasStep(block, area.step, rows, needs.leastStep)) return;
    if (isBright<kStripColumns>(block, area.step, rows, needs.threshold))
      word[static_cast<std::ptrdiff_t>(strip) * marks.wordsPerStrip] |= bit;
  };
  int strip = 0;
  for (; strip + 2 < area.strips; strip += 2) {
    const unsigned char* const pair = line + columnOf(area, strip);
    prefetch<locality>(pair + (rows + kBoxPx - 1) * area.step, area.step, rowsToCome);
    if (!needs.isBackgroundBright && !isBright<kPairColumns>(pair, area.step, rows, needs.threshold)) continue;
    markEdges(strip);
    markEdges(strip + 1);
  }
  for (; strip < area.strips; ++strip) markEdges(strip);
}

template <int locality>
inline void markAllRows(const TScanArea& area, const TBlockMarks& marks) {
  const v_uint8 threshold = cv::vx_setall_u8(static_cast<uchar>(larger(area.threshold, 0)));
  const v_uint8 leastStep = cv::vx_setall_u8(static_cast<uchar>(smaller(area.threshold + 1, 255)));
  const TEdgeNeeds needs{threshold, leastStep, isBackgroundBright(area, threshold)};
  int row = kBoxPx;
  const int end = area.rows - kBoxPx;
  for (; row + kBlockRows <= end; row += kBlockRows)
    markBlockRow<kBlockRows, locality>(area, row, end, needs, marks);
  if (row < end) markBlockRow<0, locality>(area, row, end, needs, marks);
}

// Where two rows of blocks do not fit in the first cache, the one to come would push out the one at hand.
void markBlocks(const TScanArea& area, const TBlockMarks& marks) {
  const bool fits = 2 * kBlockRows * kStripColumns * area.strips <= kFirstCacheBytes;
  if (fits) {
    markAllRows<kInFirstCache>(area, marks);
  } else {
    markAllRows<kInSecondCache>(area, marks);
  }
}

}  // namespace
}  // namespace weld
