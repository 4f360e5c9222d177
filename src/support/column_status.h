// Queries on the column status of a frame.
#pragma once

#include "support/view.h"
#include "zelWeldToolkit.h"

#include <algorithm>

namespace weld {

// Codes of TWeldPointStatus.
enum TColumnStatus : int { kCentreFound = 0, kEdgeMissing = 1, kNoPair = 2 };

// Missing columns strictly between lo and hi.
inline int countMissing(TView<TWeldPointStatus> status, int lo, int hi) {
  return static_cast<int>(std::count_if(status.begin(), status.end(), [&](const TWeldPointStatus& s) {
    return lo < s.pos && s.pos < hi && s.status == kEdgeMissing;
  }));
}

// The longest run of them. Deliberate: a column outside the range neither counts nor breaks a run.
inline int longestMissingRun(TView<TWeldPointStatus> status, int lo, int hi) {
  int longest = 0;
  int run = 0;
  for (const TWeldPointStatus& s : status) {
    if (!(lo < s.pos && s.pos < hi)) continue;
    run = s.status == kEdgeMissing ? run + 1 : 0;
    longest = std::max(longest, run);
  }
  return longest;
}

}  // namespace weld
