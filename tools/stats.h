// Counts and times of a run.
#pragma once

#include "tools/detection.h"

#include <string>
#include <vector>

namespace tool {

// The value below which this share (0..1) of the values lies, interpolated between neighbours. 0 for none.
double percentile(std::vector<double> values, double share);

class TRunStats {
public:
  void add(TSeamState state, double ms);

  int frames() const { return static_cast<int>(timesMs.size()); }
  int found() const { return foundCount; }
  int held() const { return heldCount; }
  int lost() const { return frames() - foundCount - heldCount; }
  int longestLoss() const { return longestRun; }  // frames in a row whose seam was not found, held ones included
  double foundShare() const;                      // 0 without frames
  double medianMs() const { return percentile(timesMs, 0.5); }
  double p95Ms() const { return percentile(timesMs, 0.95); }

private:
  std::vector<double> timesMs;
  int foundCount = 0;
  int heldCount = 0;
  int lossRun = 0;
  int longestRun = 0;
};

// One line: frames, found, held, lost, longest loss, times.
std::string summaryOf(const TRunStats& stats);

}  // namespace tool
