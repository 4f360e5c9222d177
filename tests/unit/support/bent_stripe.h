// Integer points of a stripe that bends into another flank, and how far a fitted line is from the main flank.
#pragma once

#include "scenes/random.h"
#include "support/line_fit.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <vector>

namespace zelFit {

struct TBentStripe {
  double slope = 0.0;
  double otherShare = 0.0;  // share of the columns on the other flank
  double otherSlope = 0.0;
  bool isOtherLeft = false;
  double noisePx = 0.5;
  int step = 1;  // columns from point to point
  std::uint64_t seed = 1;

  static constexpr int kColumns = 1280;
  static constexpr double kIntercept = 700.0;

  double firstColumn() const { return isOtherLeft ? otherShare * kColumns : 0.0; }
  double lastColumn() const { return isOtherLeft ? kColumns - 1.0 : (1.0 - otherShare) * kColumns; }

  double rowAt(int x) const {
    const double joint = std::clamp<double>(x, firstColumn(), lastColumn());
    return kIntercept + slope * joint + otherSlope * (x - joint);
  }

  std::vector<cv::Point> points() const {
    scenes::TRandom random(seed, scenes::TStream::noise);
    std::vector<cv::Point> list;
    for (int x = 0; x < kColumns; x += step) {
      const double noise = noisePx * scenes::toGaussian(random.next());
      list.emplace_back(x, static_cast<int>(std::lround(rowAt(x) + noise)));
    }
    return list;
  }

  // Over the columns of the main flank, px.
  double deviationOf(const TLineFitResult& line) const {
    const auto at = [&](double x) { return std::abs(line.intercept - kIntercept + (line.slope - slope) * x); };
    return std::max(at(firstColumn()), at(lastColumn()));
  }
};

inline std::ostream& operator<<(std::ostream& out, const TBentStripe& s) {
  return out << "slope " << s.slope << ", " << 100.0 * s.otherShare << " % at " << s.otherSlope
             << (s.isOtherLeft ? " on the left" : " on the right") << ", seed " << s.seed;
}

// Slopes, flanks on both sides and seeds, for one share of the other flank.
inline std::vector<TBentStripe> bentStripes(double otherShare, int step) {
  std::vector<TBentStripe> list;
  for (const double slope : {-0.5, -0.1, 0.0, 0.3, 1.0}) {
    for (const double bend : {-1.0, -0.3, 0.3, 0.8}) {
      for (const bool isOtherLeft : {false, true}) {
        for (std::uint64_t seed = 1; seed <= 5; ++seed) {
          list.push_back({slope, otherShare, slope + bend, isOtherLeft, 0.5, step, seed});
        }
      }
    }
  }
  return list;
}

inline TLineFitResult fitRobust(const std::vector<cv::Point>& points, double scalePx) {
  TLineFitFactory factory;
  const bool isFitted = factory.createFitType_robustLine(points, 4, scalePx);
  return isFitted == factory.result().success ? factory.result() : TLineFitResult{NAN, NAN, !isFitted};
}

inline TLineFitResult fitConsensus(const std::vector<cv::Point>& points, double centreDeg, double halfRangeDeg,
                                   double tolPx = 5.0) {
  TLineFitFactory factory;
  const bool isFitted = factory.createFitType_ransacLine(points, centreDeg, tolPx, 3.0, halfRangeDeg, true);
  return isFitted == factory.result().success ? factory.result() : TLineFitResult{NAN, NAN, !isFitted};
}

}  // namespace zelFit
