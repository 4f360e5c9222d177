// Where the stretches of a guide start. Internal to the search regions.
#pragma once

#include "support/list.h"

#include <opencv2/core.hpp>

namespace weld {

// A guide point where a new stretch starts.
struct TGuideBreak {
  cv::Point point;
  int index = 0;  // in the guide once that is in column order
};

// The breaks of a guide, left to right: its leftmost point, and every point farther than maxStretchPx right of the
// last break. Of several points in a break's column, the one that plain exchanges would bring to the front: for
// every point i and every later one j, swap them when j lies left of i.
//   guide  at least one point, any order, all with 0 <= x < columns.
TList<TGuideBreak> findGuideBreaks(TIntPointView guide, int columns, int maxStretchPx, TMemory* memory);

}  // namespace weld
