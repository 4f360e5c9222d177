// One parameter over a range: its values, what each gave, and which of them suit.
#pragma once

#include "tools/truth.h"

#include "zelWeldDetect.h"

#include <optional>
#include <string>
#include <vector>

namespace tool {

struct TSweepRange {
  std::string name;            // of the parameter, or its field
  std::vector<double> values;  // ascending, evenly spaced
};

// Whether "name=value" gives a range instead of a value.
bool isRange(const std::string& assignment);

// "minStepPx=5:40:5", from : to : step, both ends included where a step meets them. Throws a usage error that says
// what would be right: no number, not ascending, a step not above 0, more than 1000 values.
TSweepRange parseRange(const std::string& assignment);

// What one value of the swept parameter gave.
struct TSweepPoint {
  double value = 0.0;
  double foundShare = 0.0;         // 0..1
  std::optional<double> jitterPx;  // see TJitter
  double confidence = 0.0;         // median of the measurements, 0..1
  double stripeEndShare = 0.0;     // of the seams found, at an end of the stripe
  double apartPx = 0.0;            // median distance from the seams of the value before, px
  bool canFail = true;             // false: at the loosest value of its range a test refuses nothing
  std::optional<TTruthFigures> truth = {};
};

// A value is good when its found share is at most 0.01 below the best one and its jitter at most 20 % or 0.05 px,
// whichever is more, above the least jitter of these. Where none of them has a jitter, the share alone counts. No
// value is good when nothing was found, none whose test can no longer fail, whose seams lie at the stripe's ends
// or are half as sure as those of the best, and none that gave a wrong seam.
std::vector<bool> goodPoints(const std::vector<TSweepPoint>& points);

struct TGoodRange {
  std::size_t first = 0;
  std::size_t last = 0;
  std::size_t middle = 0;  // the suggestion; the lower one of two
};

// The longest run of good values, the first of equally long ones.
std::optional<TGoodRange> widestGoodRange(const std::vector<bool>& isGood);

// Why nothing is suggested; empty: the middle of the good range is.
std::string objectionTo(const std::vector<TSweepPoint>& points, const std::optional<TGoodRange>& good);

struct TSweepRow {
  TSweepPoint point;
  bool isGood = false;
  int longestLoss = 0;  // frames
  std::string reason;   // the most frequent one for losses, "-" without
};

struct TSweepResult {
  TWeldType type = TWeldType::none;
  std::string parameter;
  int frames = 0;
  std::vector<TSweepRow> rows;
  std::optional<TGoodRange> good;
  std::string objection;  // why its middle is not suggested; empty: it is
};

}  // namespace tool
