#include "contrast/log_field.h"

#include "support/exact_log.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace weld {

namespace {

constexpr int kSums = 4 * 255 + 1;  // of four pixels
constexpr int kBlockRows = 32;      // that stay in the cache while their columns are run through
constexpr int kStrideUnit = 32;     // values; rows begin on whole cache lines

const std::array<short, kSums>& logTable() {
  static const std::array<short, kSums> table = [] {
    std::array<short, kSums> values{};
    for (int sum = 0; sum < kSums; ++sum)
      values[sum] = static_cast<short>(std::floor(kLogUnit * exactLog(1.0 + sum / (4.0 * kDarkGrey)) + 0.5));
    return values;
  }();
  return table;
}

// Columns of a row of the field that lie inside the image; the others repeat the nearest of them.
struct TColumns {
  int begin = 0;
  int end = 0;
};

TColumns insideOf(int start, int columns, int all) {
  const int begin = std::clamp(-start, 0, columns - 1);
  return {begin, std::clamp(all - start, begin + 1, columns)};
}

// Blocks of rows whose columns begin alike. Pixels are read in the order of the image, whichever way the view
// lies.
void takeRows(const TGreyView& view, const TLogField& field, int firstRow, int rows, TColumns inside) {
  constexpr std::ptrdiff_t kTwo = 2;
  const auto& table = logTable();
  const unsigned char* const origin = view.first + (field.begin + kTwo * firstRow) * view.stepAlong +
                                      kTwo * field.starts[firstRow] * view.stepAcross;
  const auto sumAt = [&](const unsigned char* p) {
    return p[0] + p[view.stepAlong] + p[view.stepAcross] + p[view.stepAlong + view.stepAcross];
  };
  if (view.stepAcross == 1) {
    for (int r = 0; r < rows; ++r) {
      const unsigned char* const line = origin + kTwo * r * view.stepAlong;
      short* const row = field.row(firstRow + r);
      for (int x = inside.begin; x < inside.end; ++x) row[x] = table[sumAt(line + kTwo * x)];
    }
    return;
  }
  for (int x = inside.begin; x < inside.end; ++x) {
    const unsigned char* const line = origin + kTwo * x * view.stepAcross;
    short* const column = field.row(firstRow) + x;
    for (int r = 0; r < rows; ++r)
      column[r * static_cast<std::ptrdiff_t>(field.stride)] = table[sumAt(line + kTwo * r)];
  }
}

void repeatEnds(short* row, TColumns inside, int stride) {
  std::fill(row - kFieldMargin, row + inside.begin, row[inside.begin]);
  std::fill(row + inside.end, row + stride - kFieldMargin, row[inside.end - 1]);
}

}  // namespace

TGreyView viewAlong(const cv::Mat& grey, bool isFlat) {
  const auto step = static_cast<std::ptrdiff_t>(grey.step[0]);
  if (isFlat) return {grey.data, 1, step, grey.cols, grey.rows};
  return {grey.data, step, 1, grey.rows, grey.cols};
}

TLogField::TLogField(const TGreyView& view, const TFieldBand& band, TMemory* memory)
    : rows((band.end - band.begin) / 2), begin(band.begin), starts(memory) {
  const int all = view.across / 2;
  columns = band.halfPx > 0 ? band.halfPx + 1 : all;
  stride = (columns + 2 * kFieldMargin + kStrideUnit - 1) / kStrideUnit * kStrideUnit;
  const int halfColumns = columns / 2;
  starts.reserve(static_cast<std::size_t>(rows));
  for (int r = 0; r < rows; ++r) {
    const double middle = band.middle + band.slope * (begin + 2 * r + 0.5 - band.about);
    const double start = std::clamp(std::floor(0.5 * middle) - halfColumns, 1.0 - columns, all - 1.0);
    starts.push_back(band.halfPx > 0 ? static_cast<int>(start) : 0);  // one column at least is the image's
  }
  values = TBuffer<short>(memory, static_cast<std::size_t>(rows) * static_cast<std::size_t>(stride));
  const int block = band.halfPx > 0 ? 1 : kBlockRows;
  for (int r = 0; r < rows; r += block) {
    const TColumns inside = insideOf(starts[r], columns, all);
    const int last = std::min(r + block, rows);
    takeRows(view, *this, r, last - r, inside);
    for (int i = r; i < last; ++i) repeatEnds(row(i), inside, stride);
  }
}

}  // namespace weld
