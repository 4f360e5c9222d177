// Circle fits over points in pixels.
#pragma once

#include <opencv2/core.hpp>

#include <vector>

namespace zel {

// Circle through three points; the radius is that of the centre in double precision. False, and centre and radius
// all zero, for points that are not finite, that coincide, or that lie on a line (nearer to one than a millionth
// of their distance).
bool threePoints2circle(const cv::Point2d& a, const cv::Point2d& b, const cv::Point2d& c, cv::Point2d& centre,
                        double& radiusPx);

}  // namespace zel

namespace zelFit {

struct TCircleFitResult {
  cv::Point2d centre{0.0, 0.0};
  double radiusPx = 0.0;
  int inliers = 0;  // points nearer to the circle than the tolerance
  bool success = false;
};

// Circles. Deterministic: same points in the same order, same bits, on every processor. No random generator, no
// shared state.
class TCircleFitFactory {
public:
  // The circle that explains most points, refined on their distances from it: a consensus over all triples of an
  // even subsample (Fischler and Bolles 1981, without the random choice), then Gauss-Newton with Tukey's weights.
  // Holds against 40 % of wild points on an arc of 60 degrees.
  //
  // points: in order along the stripe, or any other. Not finite ones and those beyond 65536 px are left out.
  // distTolerancePx: distance of a point that no longer counts, > 0; taken as 0.01 to 1e6.
  // minRadiusPx, maxRadiusPx: of the circle, borders included; 0 <= min <= max.
  // No success, the result all zero: a tolerance or radii that are not as above; fewer than three usable points;
  // no triple with a circle in the range; fewer than a quarter of the points, or three, near the circle.
  bool createFitType_ransacCircle(const std::vector<cv::Point2f>& points, double distTolerancePx,
                                  double minRadiusPx, double maxRadiusPx);

  const TCircleFitResult& result() const { return fit; }

private:
  TCircleFitResult fit;
};

}  // namespace zelFit
