// A flat that is open somewhere: the hole in it, where a search finds no two flats beside it.
#include "profile/joint_features.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kPerOtherHole = 1.3;  // columns of the hole, over those of any other
constexpr int kEdgeCentres = 8;        // that tell the height of an edge

// Half a column beyond the last centre, at the height of those before it.
cv::Point2d edgeOf(const TOrientedCentres& centres, const TLine& line, int last, int side) {
  double sum = 0.0;
  int count = 0;
  for (int i = last; i >= 0 && i < centres.count() && count < kEdgeCentres; i -= side, ++count) {
    if (std::abs(centres.at(i).x - centres.at(last).x) > kEdgeCentres) break;
    sum += line.offsetOf(centres.at(i).x, centres.at(i).y);
  }
  const double x = centres.at(last).x + 0.5 * side;
  const double dx = std::max(line.dx, 0.02);
  return {x, line.y + (x - line.x) * line.dy / dx + sum / count / dx};
}

}  // namespace

std::optional<TOpening> holeIn(const TOrientedCentres& centres, const TFittedElement& flat,
                               const TStripeState& state) {
  const int last = std::min(centres.indexOf(flat.right.x), centres.count() - 1);
  double widestPx = std::max(kClosedPx + kClosedPerNoise * state.noisePx, kPerOtherHole * state.secondHolePx);
  int behind = 0;
  for (int i = std::max(centres.indexOf(flat.left.x), 1); i <= last; ++i) {
    const double holePx = centres.at(i).x - centres.at(i - 1).x - 1.0;
    if (holePx > widestPx) widestPx = holePx, behind = i;
  }
  if (behind == 0) return std::nullopt;
  const cv::Point2d left = edgeOf(centres, flat.lines.whole, behind - 1, 1);
  const cv::Point2d right = edgeOf(centres, flat.lines.whole, behind, -1);
  const double leftSigma = endSigma(state, flat.lines.right, flat.noise2, left);
  const double rightSigma = endSigma(state, flat.lines.left, flat.noise2, right);
  const double sigma = 0.5 * std::sqrt(leftSigma * leftSigma + rightSigma * rightSigma);
  const cv::Point2d across = right - left;
  return TOpening{{true, left, leftSigma},
                  {true, right, rightSigma},
                  {true, 0.5 * (left + right), sigma},
                  std::sqrt(across.dot(across))};
}

}  // namespace weld
