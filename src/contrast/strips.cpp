#include "contrast/strips.h"

#include "support/kernels/kernels.h"

namespace weld {

namespace {

constexpr int kLean = (kStripRows + 1) / 2;  // columns that a strip leans to either side at most

// Columns that the field's rows have moved by between two of them.
int leanOf(int slope, int row) {
  const int fourths = slope * (2 * row - kStripRows + 1);  // in eighths of a column
  return (fourths + (fourths >= 0 ? kStripStep : -kStripStep)) / (2 * kStripStep);
}

}  // namespace

TStrips::TStrips(const TLogField& field, const TShears& slopes, TMemory* memory)
    : shears(slopes),
      count(field.rows < kStripRows ? 0 : (field.rows - kStripRows) / kStripStep + 1),
      columns(field.columns),
      stride(field.stride),
      sums(memory, size()) {
  const auto sumRows = kernels().contrastRows.sumEight;
  for (int shear = 0; shear < shears.count(); ++shear) {
    int lean[kStripRows];
    for (int r = 0; r < kStripRows; ++r) lean[r] = leanOf(shears.first + shear, r);
    for (int strip = 0; strip < count; ++strip) {
      const short* rows[kStripRows];
      for (int r = 0; r < kStripRows; ++r)
        rows[r] = field.row(strip * kStripStep + r) + lean[r] - (kFieldMargin - kLean);
      sumRows(rows, stride - 2 * kLean, row(shear, strip) - (kFieldMargin - kLean));
    }
  }
}

}  // namespace weld
