// The kernels of edge_kernels.h, written once in universal intrinsics. Included by one source per
// instruction set, which must not let out a symbol that another source could share: nothing here but the
// intrinsics and this unnamed namespace.
#include "stripe/edge_kernels.h"

#include <opencv2/core/hal/intrin.hpp>

namespace weld {
namespace {

using cv::v_int16;
using cv::v_int32;
using cv::v_uint8;

constexpr int kBytes = v_uint8::nlanes;
constexpr int kLanes = v_int16::nlanes;
static_assert(kLanes <= kMaxGroupColumns, "a group must fit the buffer");
constexpr int kNever = 0x7fffffff;
constexpr int kClusterRows = 128;  // in which pairs are weighed together
constexpr int kLongAgo = 200;      // rows since a rising edge that can no longer be paired

inline v_int16 loadRow(const unsigned char* pixels) {
  return cv::v_reinterpret_as_s16(cv::vx_load_expand(pixels));
}

inline v_int16 lanesOf(int value) {
  return cv::vx_setall_s16(static_cast<short>(value));
}

inline int smaller(int a, int b) {
  return a < b ? a : b;
}
inline int larger(int a, int b) {
  return a > b ? a : b;
}

inline std::ptrdiff_t columnOf(const TScanArea& area, int strip) {
  return strip + 1 < area.strips ? strip * kStripColumns : area.lastStrip;
}

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

// The strips of one row of blocks.
inline void markBlockRow(const TScanArea& area, int row, int rows, std::uint64_t* marks, int words) {
  const v_uint8 threshold = cv::vx_setall_u8(static_cast<uchar>(area.threshold < 0 ? 0 : area.threshold));
  const v_uint8 leastStep = cv::vx_setall_u8(static_cast<uchar>(smaller(area.threshold + 1, 255)));
  const int index = (row - kBoxPx) / kBlockRows;
  std::uint64_t* word = marks + index / kMarkBits;
  const std::uint64_t bit = std::uint64_t{1} << (index % kMarkBits);
  const unsigned char* line = area.pixels + row * area.step;
  for (int strip = 0; strip < area.strips; ++strip, word += words) {
    const unsigned char* block = line + columnOf(area, strip);
    if (isBright(block, area.step, rows, threshold) && hasStep(block, area.step, rows, leastStep)) *word |= bit;
  }
}

void markBlocks(const TScanArea& area, std::uint64_t* marks, int words) {
  int row = kBoxPx;
  const int end = area.rows - kBoxPx;
  // Called with a constant number of rows, whose loops get unrolled, and once with the rest.
  for (; row + kBlockRows <= end; row += kBlockRows) markBlockRow(area, row, kBlockRows, marks, words);
  if (row < end) markBlockRow(area, row, end - row, marks, words);
}

// The edges of one kind in every column. An edge is its strength + 1; 0 is none.
struct TEdgesOfKind {
  v_int16 strongest[kPairedEdges];  // strongest first
  v_int16 count;

  TEdgesOfKind() : count(lanesOf(0)) {
    for (v_int16& edge : strongest) edge = lanesOf(0);
  }

  // Returns the edges without those beyond the limit.
  v_int16 add(v_int16 edges) {
    v_int16 isEdge = edges > lanesOf(0);
    if (!cv::v_check_any(isEdge)) return edges;
    isEdge = isEdge & (count < lanesOf(kMaxEdges));
    edges = edges & isEdge;
    count = count - isEdge;
    v_int16 weaker = edges;
    for (v_int16& edge : strongest) {
      const v_int16 stronger = cv::v_max(edge, weaker);
      weaker = cv::v_min(edge, weaker);
      edge = stronger;
    }
    return edges;
  }
};

// Decides which edges of one kind are among the strongest, the earlier ones of equal strength.
class TStrongestFilter {
public:
  explicit TStrongestFilter(const TEdgesOfKind& edges) : weakest(edges.strongest[kPairedEdges - 1]) {
    placesForWeakest = lanesOf(0);
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

struct TGroupEdges {
  int rows = 0;  // rows in the buffer
  TEdgesOfKind rising;
  TEdgesOfKind falling;
};

// Writes the edges of some rows into the buffer: rising edges positive, falling ones
// negative. Rows without any edge are left out.
inline void findEdges(const unsigned char* column, std::size_t step, const TRowRange& range, int grayThreshold,
                      const TEdgeRows& buffer, TGroupEdges& found) {
  const v_int16 threshold = lanesOf(grayThreshold);
  const v_int16 edgeLimit = lanesOf(kBoxPx * grayThreshold);
  const v_int16 one = lanesOf(1);

  v_int16 rise = lanesOf(0);  // sum of the 5 rows from here on less the sum of the 5 rows before
  for (int row = range.first; row < range.first + kBoxPx; ++row) {
    rise = rise + loadRow(column + row * step) - loadRow(column + (row - kBoxPx) * step);
  }
  for (int row = range.first; row < range.end; ++row) {
    const unsigned char* here = column + row * step;
    const v_int16 grey = loadRow(here);
    const v_int16 isEdge = (grey >= threshold) & (cv::v_max(rise, lanesOf(0) - rise) > edgeLimit);
    if (cv::v_check_any(isEdge)) {
      const v_int16 rising = (rise + one) & isEdge & (rise > lanesOf(0));
      const v_int16 falling = (one - rise) & isEdge & (rise <= lanesOf(0));
      const v_int16 edges = found.rising.add(rising) - found.falling.add(falling);
      cv::v_store(buffer.edges + found.rows * kLanes, edges);
      buffer.row[found.rows++] = row;
    }
    rise = rise + loadRow(here + kBoxPx * step) + loadRow(here - kBoxPx * step) - grey - grey;
  }
}

// Returns the largest number of pairs that a column has by then.
inline int recordPairs(int row, const v_int16& isPair, const v_int16& age, int firstColumn, TStripPairs& pairs) {
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
inline int pairGroup(const TEdgeRows& buffer, const TGroupEdges& found, int firstColumn, TStripPairs& pairs) {
  TStrongestFilter risingFilter(found.rising);
  TStrongestFilter fallingFilter(found.falling);
  const v_int16 longAgo = lanesOf(kLongAgo);
  v_int16 age = longAgo;  // rows since the last edge when that was a rising one
  int previousRow = 0;
  int most = 0;
  for (int i = 0; i < found.rows; ++i) {
    const int row = buffer.row[i];
    age = cv::v_min(age + lanesOf(smaller(row - previousRow, kLongAgo)), longAgo);
    previousRow = row;
    const v_int16 edges = cv::vx_load(buffer.edges + i * kLanes);
    const v_int16 isRising = risingFilter.keep(edges);
    const v_int16 isFalling = fallingFilter.keep(lanesOf(0) - edges);
    const v_int16 isPair = isFalling & (age > lanesOf(kMinPairPx)) & (age < lanesOf(kMaxPairPx));
    if (cv::v_check_any(isPair)) most = larger(most, recordPairs(row, isPair, age, firstColumn, pairs));
    age = cv::v_select(isRising, lanesOf(0), cv::v_select(isFalling, longAgo, age));
  }
  return most;
}

// Adds the sums and moments of pairs that lie in the rows 0 .. rows - 1. low and high are their first and one
// past their last row, both 0 in columns without a pair.
inline void weighCluster(const unsigned char* column, std::size_t step, int rows, const v_int16& low,
                         const v_int16& high, std::int32_t* sums, std::int32_t* moments) {
  const auto greyInside = [&](int row) {
    const v_int16 at = lanesOf(row);
    return loadRow(column + row * step) & (at >= low) & (at < high);
  };
  v_int16 sum = lanesOf(0);
  v_int32 moment[2] = {cv::vx_setzero_s32(), cv::vx_setzero_s32()};
  for (int row = 0; row < rows; row += 2) {
    const v_int16 even = greyInside(row);
    const v_int16 odd = greyInside(row + 1);
    const v_int16 weights = cv::v_reinterpret_as_s16(cv::vx_setall_s32(row | (row + 1) << 16));
    v_int16 left;
    v_int16 right;
    cv::v_zip(even, odd, left, right);
    moment[0] = moment[0] + cv::v_dotprod(left, weights);
    moment[1] = moment[1] + cv::v_dotprod(right, weights);
    sum = sum + even + odd;
  }
  v_int32 wideSum[2];
  v_int32 sumTimesLow[2];
  cv::v_expand(sum, wideSum[0], wideSum[1]);
  cv::v_mul_expand(sum, low, sumTimesLow[0], sumTimesLow[1]);
  for (int half = 0; half < 2; ++half) {
    const int x = half * v_int32::nlanes;
    cv::v_store(sums + x, cv::vx_load(sums + x) + wideSum[half]);
    cv::v_store(moments + x, cv::vx_load(moments + x) + moment[half] - sumTimesLow[half]);
  }
}

// Sums and moments of the pairs with one index. Those of neighbouring columns lie side by side as a rule, and
// are weighed together.
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
    weighCluster(column + first * step, step, rows, cv::v_pack(relativeLow[0], relativeLow[1]),
                 cv::v_pack(relativeHigh[0], relativeHigh[1]), pairs.sum[index] + x, pairs.moment[index] + x);
  }
}

void pairStripeEdges(const TScanArea& area, int strip, const TRowRange* ranges, int rangeCount,
                     const TEdgeRows& buffer, TStripPairs& pairs) {
  pairs = {};
  for (int x = 0; x < kStripColumns; x += kLanes) {
    const unsigned char* column = area.pixels + columnOf(area, strip) + x;
    TGroupEdges found;
    for (int i = 0; i < rangeCount; ++i) {
      findEdges(column, area.step, ranges[i], area.threshold, buffer, found);
    }
    const v_int16 hasBoth = (found.rising.count > lanesOf(0)) & (found.falling.count > lanesOf(0));
    cv::v_store(pairs.hasBothEdges + x, hasBoth);
    if (!cv::v_check_any(hasBoth)) continue;
    const int most = pairGroup(buffer, found, x, pairs);
    for (int index = 0; index < most; ++index) weighPairs(column, area.step, x, index, pairs);
  }
}

}  // namespace
}  // namespace weld
