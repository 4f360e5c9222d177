// What is measured of a joint in every frame, as columns of one table: records, charts and comparisons read it.
#pragma once

#include "zelWeldDetect.h"

#include <functional>
#include <string>
#include <vector>

namespace tool {

struct TMeasure {
  std::string name;                                     // "gapPx", "leftEdge.x"
  std::string unit;                                     // "px", "px2", "deg"; empty for ratios
  int digits = 0;                                       // decimals that mean something
  std::function<double(const TJointMeasurement&)> get;  // not a number where it is not measured
  bool isOfPoint = false;                               // of one of the joint's points
};

// Confidence, sizes and angles, then place and standard deviation of every point that the joint has.
std::vector<TMeasure> measuresOf(TWeldType type);

// The one of that name. Throws a usage error with the names that there are.
TMeasure findMeasure(TWeldType type, const std::string& name);

// How far a test is from its limit, in its unit: above 0 passed, below 0 failed. Not a number where it has none.
double marginOf(const TTraceCheck& test);

// The tests that decided about a frame: those of the attempt that it ended with, then the tracker's own; those
// without numbers left out.
std::vector<TTraceCheck> testsOf(const TFrameTrace& trace);

}  // namespace tool
