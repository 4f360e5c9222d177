#include "profile/joint_features.h"

#include "support/arc_tangent.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kLeastStepPx = 8.0;  // of a lap
constexpr double kStepPerNoise = 6.0;
constexpr double kLeastGapPx = 4.0;   // of a square gap
constexpr double kGapPerHole = 1.3;   // over the second largest hole of the stripe
constexpr double kUnmodelled = 1.6;   // variance of waves and bows over that of the noise
constexpr double kTouchShare = 4.0;   // of the variance of a line in that of the arc that touches it
constexpr double kEndColumnPx = 0.4;  // standard deviation of an end along x

double yOf(const TLine& line, double x) {
  return line.y + (x - line.x) * line.dy / std::max(line.dx, 0.02);
}

}  // namespace

TBase baseOf(const TLine& left, const TLine& right) {
  const double dx = left.dx + right.dx;
  const double dy = left.dy + right.dy;
  const double length = std::sqrt(dx * dx + dy * dy);
  return {dx / length, dy / length};
}

double lineSigma(const TStripeState& state, const TLine& line, double noise2, cv::Point2d at) {
  if (!(line.weight > 0.0) || !(line.spread > 0.0)) return std::sqrt(noise2);
  const double along = line.alongOf(at.x, at.y);
  const double variance = kUnmodelled * state.inflation * std::max(line.variance, 0.25 * noise2);
  return std::sqrt(variance * (1.0 / line.weight + along * along / line.spread));
}

double crossingSigma(const TStripeState& state, const TFittedElement& left, const TFittedElement& right,
                     cv::Point2d at) {
  const TLine& a = left.lines.right;
  const TLine& b = right.lines.left;
  const double sine = std::max(0.02, std::abs(a.dx * b.dy - a.dy * b.dx));
  const double sigmaA = lineSigma(state, a, left.noise2, at);
  const double sigmaB = lineSigma(state, b, right.noise2, at);
  return std::sqrt(sigmaA * sigmaA + sigmaB * sigmaB) / sine;
}

double arcSigma(const TStripeState& state, const TProfileLayout& layout, std::size_t e, cv::Point2d at) {
  const TFittedElement& arc = layout.elements[e];
  const TElementRange& range = layout.range(e);
  const TCircle& c = arc.arc.circle;
  const double spread = arc.arc.spread.at((at.x - c.x) / c.r, (at.y - c.y) / c.r);
  double variance = kUnmodelled * state.inflation * arc.noise2 * std::max(0.0, spread);
  // What it touches moves it too.
  if (range.isTouchingLeft) {
    const TFittedElement& line = layout.elements[e - 1];
    const double sigma = lineSigma(state, line.lines.right, line.noise2, arc.left);
    variance += kTouchShare * sigma * sigma;
  }
  if (range.isTouchingRight) {
    const TFittedElement& line = layout.elements[e + 1];
    const double sigma = lineSigma(state, line.lines.left, line.noise2, arc.right);
    variance += kTouchShare * sigma * sigma;
  }
  return std::sqrt(variance);
}

double cornerSigma(const TStripeState& state, const TProfileLayout& layout, std::size_t j) {
  const bool isLineA = layout.range(j).kind == TElementKind::line;
  const bool isLineB = layout.range(j + 1).kind == TElementKind::line;
  if (isLineA && isLineB) {
    return crossingSigma(state, layout.elements[j], layout.elements[j + 1], layout.elements[j].right);
  }
  return arcSigma(state, layout, isLineA ? j + 1 : j, layout.elements[j].right);
}

double withRounding(double sigma, const TProfileLayout& layout, std::size_t corner, std::size_t opposite) {
  const bool mayBeRound = layout.profile->junctions[corner].kind == TJunctionKind::fillet;
  const TCircleFit& known = layout.fillets[opposite];
  if (!mayBeRound || layout.fillets[corner].isFound || !known.isFound) return sigma;
  const TLine& a = layout.elements[corner].lines.right;
  const TLine& b = layout.elements[corner + 1].lines.left;
  const double tangentPx =
      known.circle.r * std::abs((a.dx * b.dy - a.dy * b.dx) / (1.0 + a.dx * b.dx + a.dy * b.dy));
  const double hiddenPx = kHiddenShare * tangentPx;
  return std::sqrt(sigma * sigma + hiddenPx * hiddenPx);
}

double endSigma(const TStripeState& state, const TLine& line, double noise2, cv::Point2d at) {
  const double columns = std::sqrt(kEndColumnPx * kEndColumnPx + state.unseenPx * state.unseenPx);
  const double along = columns / std::max(line.dx, 0.05);
  const double across = lineSigma(state, line, noise2, at);
  return std::sqrt(along * along + across * across);
}

TLine surfaceAt(const TProfileLayout& layout, std::size_t e, bool isRight) {
  const TFittedElement& element = layout.elements[e];
  if (layout.range(e).kind == TElementKind::line) return isRight ? element.lines.right : element.lines.left;
  const cv::Point2d at = isRight ? element.right : element.left;
  const TCircle& c = element.arc.circle;
  const double side = layout.range(e).isCentreBelow ? 1.0 : -1.0;
  return {at.x, at.y, side * (c.y - at.y) / c.r, side * (at.x - c.x) / c.r, 0.0, 0.0, 0.0};
}

void setFeature(TProfileFit& fit, TFeature feature, cv::Point2d pos, double sigmaPx) {
  fit.features[static_cast<std::size_t>(feature)] = {true, pos, sigmaPx};
}

double angleDegOf(const TLine& line) {
  return arcTangent2(line.dy, line.dx) * kDegPerRad;
}

double mismatchAt(const TLine& left, const TLine& right, double x) {
  return yOf(right, x) - yOf(left, x);
}

void setShoulderMeasures(const TOrientedCentres& centres, TSpan groove, TProfileFit& fit) {
  const cv::Point2d left = fit.feature(TFeature::leftShoulder).pos;
  const cv::Point2d right = fit.feature(TFeature::rightShoulder).pos;
  const cv::Point2d root = fit.feature(TFeature::root).pos;
  const cv::Point2d across = right - left;
  const double widthPx = std::sqrt(across.x * across.x + across.y * across.y);
  fit.measures.widthPx = widthPx;
  if (!(widthPx > 0.0)) return;
  fit.measures.depthPx = ((root.y - left.y) * across.x - (root.x - left.x) * across.y) / widthPx;
  double doubleArea = 0.0;
  cv::Point2d before = left;
  const auto add = [&](cv::Point2d p) {
    doubleArea += (before.x - left.x) * (p.y - left.y) - (before.y - left.y) * (p.x - left.x);
    before = p;
  };
  for (int i = groove.first; i < groove.last; ++i) {
    if (centres.at(i).x > left.x && centres.at(i).x < right.x) add(centres.at(i));
  }
  add(right);
  fit.measures.areaPx2 = std::abs(0.5 * doubleArea);
}

bool measurePlain(const TProfileLayout& layout, const TStripeState& state, TProfileFit& fit) {
  const std::size_t last = layout.count() - 1;
  const TFittedElement& a = layout.elements[0];
  const TFittedElement& b = layout.elements[last];
  if (layout.range(0).kind != TElementKind::line || layout.range(last).kind != TElementKind::line) return true;
  TJointMeasures& m = fit.measures;
  const TBase base = baseOf(a.lines.right, b.lines.left);
  m.baseAngleDeg = arcTangent2(base.dy, base.dx) * kDegPerRad;
  const double endA = endSigma(state, a.lines.right, a.noise2, a.right);
  const double endB = endSigma(state, b.lines.left, b.noise2, b.left);
  switch (layout.profile->measuring) {
    case TMeasuring::corner:
      m.leftAngleDeg = angleDegOf(a.lines.whole);
      m.rightAngleDeg = angleDegOf(b.lines.whole);
      m.includedAngleDeg = 180.0 - std::abs(m.leftAngleDeg - m.rightAngleDeg);
      setFeature(fit, TFeature::corner, a.right, cornerSigma(state, layout, 0));
      break;
    case TMeasuring::plate: {
      const cv::Point2d across = a.right - a.left;
      m.widthPx = std::sqrt(across.x * across.x + across.y * across.y);
      m.baseAngleDeg = angleDegOf(a.lines.whole);
      setFeature(fit, TFeature::leftEnd, a.left, endSigma(state, a.lines.left, a.noise2, a.left));
      setFeature(fit, TFeature::rightEnd, a.right, endA);
      break;
    }
    case TMeasuring::gap:
    case TMeasuring::lap: {
      const cv::Point2d across = b.left - a.right;
      m.gapPx = across.x * base.dx + across.y * base.dy;
      m.mismatchPx = layout.profile->measuring == TMeasuring::lap
                         ? base.depthOf(a.right, b.left)
                         : mismatchAt(a.lines.right, b.lines.left, a.right.x);
      m.leftAngleDeg = angleDegOf(a.lines.whole);
      m.rightAngleDeg = angleDegOf(b.lines.whole);
      const bool isLap = layout.profile->measuring == TMeasuring::lap;
      setFeature(fit, isLap ? TFeature::upperCorner : TFeature::leftEdge, a.right, endA);
      setFeature(fit, isLap ? TFeature::lowerCorner : TFeature::rightEdge, b.left, endB);
      if (isLap) return std::abs(m.mismatchPx) >= std::max(kLeastStepPx, kStepPerNoise * state.noisePx);
      return m.gapPx >= kLeastGapPx && m.gapPx >= kGapPerHole * state.secondHolePx;
    }
    default:
      break;
  }
  return true;
}

bool measureLayout(const TOrientedCentres& centres, const TProfileLayout& layout, const TStripeState& state,
                   TProfileFit& fit) {
  switch (layout.profile->measuring) {
    case TMeasuring::groove:
      return measureGroove(centres, layout, state, fit);
    case TMeasuring::bevel:
      return measureBevel(centres, layout, state, fit);
    case TMeasuring::flareV:
    case TMeasuring::flareBevel:
      return measureFlare(centres, layout, state, fit);
    case TMeasuring::points:
      return measurePoints(centres, layout, state, fit);
    default:
      return measurePlain(layout, state, fit);
  }
}

}  // namespace weld
