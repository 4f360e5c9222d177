// Line fits over integer points.
#pragma once

#include <opencv2/core.hpp>

#include <vector>

namespace zelFit {

struct TLineFitResult {
  double slope = 0.0;
  double intercept = 0.0;
  bool success = false;
};

// Deterministic: same points, same bits, on every processor. No random generator, no shared state.
class TLineFitFactory {
public:
  // Robust fit; must hold against a second stripe flank. `method` 4 is the only one that callers use.
  // param: scale of the residuals, px, > 0.
  bool createFitType_robustLine(const std::vector<cv::Point>& points, int method, double param);

  // Consensus fit whose angle (degrees of atan(slope)) lies in angleCentre +- angleHalfRange, taken modulo 180.
  bool createFitType_ransacLine(const std::vector<cv::Point>& points, double angleCentre, double distTolerance,
                                double factor, double angleHalfRange, bool flag);

  const TLineFitResult& result() const { return fit; }

private:
  TLineFitResult fit;
};

}  // namespace zelFit
