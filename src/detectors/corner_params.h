// The settings of the corner detector as its stages use them.
#pragma once

#include "zelWeldSettings.h"

#include <algorithm>

namespace weld {

// A range of angles and the settings that set its bounds.
struct TSetRange : TAngleRange {
  const char* minParameter = "";
  const char* maxParameter = "";
};

inline TSetRange orderedRange(const TAngleRange& range, const char* nameOfMin, const char* nameOfMax) {
  const TAngleRange ordered{std::min(range.min, range.max), std::max(range.min, range.max)};
  return range.max < range.min ? TSetRange{ordered, nameOfMax, nameOfMin}
                               : TSetRange{ordered, nameOfMin, nameOfMax};
}

struct TCornerParams : TCornerSettings {
  explicit TCornerParams(const TWeldParams& params)
      : TCornerSettings(TCornerSettings::of(params)),
        leftDeg(orderedRange(leftFlankDeg, "leftFlankDeg.min", "leftFlankDeg.max")),
        rightDeg(orderedRange(rightFlankDeg, "rightFlankDeg.min", "rightFlankDeg.max")),
        includedDeg(orderedRange(includedAngleDeg, "includedAngleDeg.min", "includedAngleDeg.max")) {}

  TSetRange leftDeg;
  TSetRange rightDeg;
  TSetRange includedDeg;
};

inline bool isStrictlyInside(const TAngleRange& range, double deg) {
  return range.min < deg && deg < range.max;
}

}  // namespace weld
