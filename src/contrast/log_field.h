// The image at half resolution on a logarithmic scale, in which contrast does not depend on the light.
#pragma once

#include "support/arena.h"
#include "support/list.h"

#include <opencv2/core.hpp>

#include <cstddef>

namespace weld {

inline constexpr int kLogUnit = 512;     // per factor of e
inline constexpr double kDarkGrey = 10;  // below it the scale is linear, or noise would count for contrast
inline constexpr int kFieldMargin = 24;  // columns on either side that repeat the outermost one

// Pixels of a grey image as seen along the seam: `along` counts rows of a steep seam and columns of a flat one.
struct TGreyView {
  const unsigned char* first = nullptr;
  std::ptrdiff_t stepAlong = 0;
  std::ptrdiff_t stepAcross = 0;
  int along = 0;
  int across = 0;

  int at(int a, int c) const { return first[a * stepAlong + c * stepAcross]; }
};

TGreyView viewAlong(const cv::Mat& grey, bool isFlat);

// The part of a view that is searched: stations begin .. end - 1 along it, and across it a band around the line
// middle + slope * (along - about), or everything.
struct TFieldBand {
  int begin = 0;
  int end = 0;
  double about = 0.0;
  double middle = 0.0;
  double slope = 0.0;
  int halfPx = 0;  // 0: everything
};

// Rows of logarithms, one per two stations; row r begins at column starts[r] of the halved view.
struct TLogField {
  TLogField(const TGreyView& view, const TFieldBand& band, TMemory* memory);

  int rows = 0;
  int columns = 0;
  int stride = 0;
  int begin = 0;  // of the band, px
  TList<int> starts;
  TBuffer<short> values;

  short* row(int r) const { return values.data() + static_cast<std::ptrdiff_t>(r) * stride + kFieldMargin; }
};

}  // namespace weld
