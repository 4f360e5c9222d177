// Line fits over integer points.
#pragma once

#include "support/list.h"

#include <opencv2/core.hpp>

namespace zelFit {

struct TLineFitResult {
  double slope = 0.0;
  double intercept = 0.0;
  bool success = false;
};

// Straight lines y = slope * x + intercept. Deterministic: same points in the same order, same bits, on every
// processor. No random generator, no shared state. Points more than 65536 px from the origin are left out.
//
// Each operation returns whether it succeeded; without success the result is all zero.
class TLineFitFactory {
public:
  explicit TLineFitFactory(weld::TMemory* workingMemory = std::pmr::new_delete_resource())
      : memory(workingMemory) {}

  // The line of the flank that holds most points; a second flank with up to 40 % of the points does not bend it.
  // The best line through two points of a subsample is refined by Tukey's reweighted least squares on all points.
  // Where that gives none, a line from one of the first points to one of the last.
  //
  // method: every value means this fit.
  // scalePx: distance of a point that no longer belongs to the line, > 0; taken as 0.01 to 1e6.
  // No success: scale not above 0; fewer than two points, or all in one column; no consensus, that is, less than a
  // tenth of the points, or fewer than three where there are three, nearer to the line than the scale; a vertical
  // set, that is, those near points span more rows than columns and no more columns than two scales.
  bool createFitType_robustLine(weld::TIntPointView points, int method, double scalePx);

  // At a fraction of the cost: true only where the robust line succeeds. False tells nothing. The same for the
  // points and for kFewPoints of them picked evenly.
  static constexpr int kFewPoints = 128;
  bool isSureOfRobustLine(weld::TIntPointView points, double scalePx) const;

  // The line that explains most points among those whose angle, degrees of atan(slope), lies in
  // angleCentreDeg +- angleHalfRangeDeg modulo 180, borders included; the line returned always lies inside. Angles
  // turn with y pointing down. Meant for about 100 points; of more, 101 evenly chosen ones find the line, all
  // refine it.
  //
  // distTolerancePx: distance of a point that no longer counts, > 0; taken as 0.01 to 1e6.
  // factor, flag: without influence.
  // No success: tolerance not above 0; half range negative; an angle that is not a number; fewer than two points,
  // or all in one column; no two of 32 evenly chosen points whose line lies in the interval. How many points must
  // lie on the line is for the caller to judge.
  bool createFitType_ransacLine(weld::TIntPointView points, double angleCentreDeg, double distTolerancePx,
                                double factor, double angleHalfRangeDeg, bool flag);

  const TLineFitResult& result() const { return fit; }

private:
  weld::TMemory* memory;
  TLineFitResult fit;
};

}  // namespace zelFit
