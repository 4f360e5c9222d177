// The parameters of the corner detector under the names that its stages use.
#pragma once

#include "zelWeldDetect.h"

#include <algorithm>

namespace weld {

// A range of angles and the parameters that set its bounds.
struct TSetRange : TAngleRange {
  const char* minParameter = "";
  const char* maxParameter = "";
};

struct TCornerParams {
  TSetRange leftDeg;
  TSetRange rightDeg;
  TSetRange includedDeg;
  double flankTolPx;       // distance tolerance of the flank fits
  double refitTolPx;       // scale of the robust refits
  double minFlankShare;    // share of points on a flank, and points per column that must be exceeded
  double minFlankPoints;   // must be exceeded
  double gapBandRatio;     // where along the flanks the band that must be unbroken begins
  int maxMissingRun;       // longest run of missing columns inside that band
  int missingColumnLimit;  // missing columns around the corner must stay below
  bool acceptsGap;
};

inline TSetRange orderedRange(double a, const char* nameOfA, double b, const char* nameOfB) {
  const TAngleRange range{std::min(a, b), std::max(a, b)};
  return b < a ? TSetRange{range, nameOfB, nameOfA} : TSetRange{range, nameOfA, nameOfB};
}

inline TCornerParams cornerParams(const TWeldParams& p) {
  return {orderedRange(p.angleRange1Min, "angleRange1Min", p.angleRange1Max, "angleRange1Max"),
          orderedRange(p.angleRange2Min, "angleRange2Min", p.angleRange2Max, "angleRange2Max"),
          orderedRange(p.angleRange5Min, "angleRange5Min", p.angleRange5Max, "angleRange5Max"),
          p.dPara2,
          p.dPara4,
          p.dPara3,
          p.dPara6,
          p.dPara10,
          p.nPara5,
          p.nPara1,
          p.haveGap};
}

inline bool isStrictlyInside(const TAngleRange& range, double deg) {
  return range.min < deg && deg < range.max;
}

}  // namespace weld
