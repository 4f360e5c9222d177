// Kernel that tells the blocks that may hold an edge.
#pragma once

#include "support/kernels/kernel_lanes.inl.h"

namespace weld {
namespace {

constexpr int kSampledRowPx = 64;  // distance of the rows that tell the brightness of the background

// Any pixel of the block at or above the threshold.
inline bool isBright(const unsigned char* block, std::size_t step, int rows, const v_uint8& threshold) {
  v_uint8 brightest = cv::vx_setzero_u8();
  for (int row = 0; row < rows; ++row) {
    for (int x = 0; x < kStripColumns; x += kBytes) {
      brightest = cv::v_max(brightest, cv::vx_load(block + row * step + x));
    }
  }
  return cv::v_check_any(brightest >= threshold);
}

// Any step over 5 rows among those that the box sums of the block's rows are made of. An edge needs one
// above the threshold, since the box difference is the sum of five.
inline bool hasStep(const unsigned char* block, std::size_t step, int rows, const v_uint8& leastStep) {
  v_uint8 largest = cv::vx_setzero_u8();
  for (int row = 0; row < rows + kBoxPx - 1; ++row) {
    const unsigned char* here = block + row * step;
    for (int x = 0; x < kStripColumns; x += kBytes) {
      largest = cv::v_max(largest, cv::v_absdiff(cv::vx_load(here + x), cv::vx_load(here - kBoxPx * step + x)));
    }
  }
  return cv::v_check_any(largest >= leastStep);
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
      bright += isBright(area.pixels + row * area.step + columnOf(area, strip), area.step, 1, threshold) ? 1 : 0;
    }
  }
  return 2 * bright > all;
}

// The strips of one row of blocks.
inline void markBlockRow(const TScanArea& area, int row, int rows, const TEdgeNeeds& needs,
                         const TBlockMarks& marks) {
  const auto hasLight = [&](const unsigned char* block) {
    return isBright(block, area.step, rows, needs.threshold);
  };
  const auto hasRise = [&](const unsigned char* block) {
    return hasStep(block, area.step, rows, needs.leastStep);
  };
  const int index = (row - kBoxPx) / kBlockRows;
  std::uint64_t* word = marks.words + index / kMarkBits;
  const std::uint64_t bit = std::uint64_t{1} << (index % kMarkBits);
  const unsigned char* line = area.pixels + row * area.step;
  for (int strip = 0; strip < area.strips; ++strip, word += marks.wordsPerStrip) {
    const unsigned char* block = line + columnOf(area, strip);
    const bool mayHoldEdge =
        needs.isBackgroundBright ? hasRise(block) && hasLight(block) : hasLight(block) && hasRise(block);
    if (mayHoldEdge) *word |= bit;
  }
}

void markBlocks(const TScanArea& area, const TBlockMarks& marks) {
  const v_uint8 threshold = cv::vx_setall_u8(static_cast<uchar>(larger(area.threshold, 0)));
  const v_uint8 leastStep = cv::vx_setall_u8(static_cast<uchar>(smaller(area.threshold + 1, 255)));
  const TEdgeNeeds needs{threshold, leastStep, isBackgroundBright(area, threshold)};
  int row = kBoxPx;
  const int end = area.rows - kBoxPx;
  // Called with a constant number of rows, whose loops get unrolled, and once with the rest.
  for (; row + kBlockRows <= end; row += kBlockRows) markBlockRow(area, row, kBlockRows, needs, marks);
  if (row < end) markBlockRow(area, row, end - row, needs, marks);
}

}  // namespace
}  // namespace weld
