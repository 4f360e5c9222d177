// The table of a sweep, from what each value saw in every frame.
#pragma once

#include "tools/seam_run.h"
#include "tools/sweep.h"

#include <optional>
#include <string>
#include <vector>

namespace tool {

// A tracker for each value. Throws a usage error for a parameter that the joint does not read or that is true or
// false, for a value that it refuses, and for a measure that the joint has not.
//   objective  the measure that is to be steady; empty: the seam point
std::vector<TSeamRun> sweptRuns(TTracking tracking, const TSweepRange& range, const std::string& objective);

class TSweepTable {
public:
  TSweepTable(TWeldType joint, const TSweepRange& swept);

  // The next frame, its image not looked at, and what each value saw there.
  void add(const TFrame& frame, const std::vector<TSeamFrame>& seen, const TTruth& truth);

  // Without a label for any frame the points have no truth.
  TSweepResult result() const;

private:
  // A value, and what it has found so far.
  struct TValue {
    double value = 0.0;
    TSeamFigures figures = {};
    TTruthFigures truth = {};
    std::vector<double> apartPx = {};  // from the seams of the value before
  };

  bool canFail(double value) const;
  TSweepRow rowOf(const TValue& swept) const;

  TWeldType type;
  std::string parameter;
  std::vector<TValue> columns;
  std::optional<TLimitKind> limit;  // of the test that the parameter sets, once it has run
};

}  // namespace tool
