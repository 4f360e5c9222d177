// Sums of the logarithmic field along short oblique strips: noise falls, a line in the strip's direction stays.
#pragma once

#include "contrast/log_field.h"
#include "support/arena.h"
#include "support/list.h"

namespace weld {

inline constexpr int kStripRows = 8;   // rows of the field in a strip
inline constexpr int kStripStep = 4;   // rows from strip to strip, and steps of slope per column
inline constexpr int kMostShears = 9;  // slopes -1 .. 1 in quarters

// Slopes first / kStripStep .. last / kStripStep, columns per row, against the field.
struct TShears {
  int first = 0;
  int last = 0;
  int count() const { return last - first + 1; }
};

// For every slope and strip the sums at every column, where the strip's middle lies.
struct TStrips {
  TStrips(const TLogField& field, const TShears& shears, TMemory* memory);

  TShears shears;
  int count = 0;
  int columns = 0;
  int stride = 0;
  TBuffer<short> sums;

  short* row(int shear, int strip) const { return sums.data() + offset(shear, strip); }
  // Of the value at column 0, in this and in every buffer of the same shape.
  std::ptrdiff_t offset(int shear, int strip) const {
    return (static_cast<std::ptrdiff_t>(shear) * count + strip) * stride + kFieldMargin;
  }
  std::size_t size() const { return static_cast<std::size_t>(shears.count()) * count * stride; }
};

}  // namespace weld
