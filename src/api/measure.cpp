#include "api/measure.h"

#include "api/joints.h"
#include "support/arc_tangent.h"
#include "support/arena.h"
#include "support/exact_log.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kReachPx = 260.0;  // columns beside a seam that tell its surfaces
constexpr std::size_t kFewestPoints = 10;
constexpr double kSurePoints = 40.0;   // points on a side that make a measure half sure
constexpr double kEdgeSigmaPx = 0.29;  // an edge lies between two columns,
constexpr double kEndSigmaPx = 1.0;    // that of a plate loses one to smoothing;
constexpr double kLitSigmaPx = 0.13;   // the light of the columns tells either
constexpr double kInflation = 6.0;     // of the variance of a mean: neighbours scatter alike
constexpr double kLeastSine = 0.05;
// Of the joints found, however unclear, and how soon clarity makes up for the rest; from made joints of all
// levels.
constexpr double kRightAtLeast = 0.75;
constexpr double kClarityScale = 0.4;

// A surface beside the seam: the least squares line of its centres.
struct TSide {
  cv::Point2d middle;
  double k = 0.0;       // slope
  double noise2 = 0.0;  // variance of the centres about it, px^2
  TPointView points;

  double rowAt(double x) const { return middle.y + (x - middle.x) * k; }
  double angleDeg() const { return slopeToDeg(k); }
  // Across the line at its end, and of an end that is only seen to within so much along it.
  double sigmaPx() const { return 2.0 * std::sqrt(kInflation * noise2 / static_cast<double>(points.size())); }
  double endSigmaPx(double alongPx) const { return std::sqrt(alongPx * alongPx + sigmaPx() * sigmaPx()); }
};

bool isUsable(cv::Point2f p) {
  return std::abs(p.x) < 1e6F && std::abs(p.y) < 1e6F;  // false for what is not a number
}

std::optional<TSide> sideOf(TPointView points) {
  if (points.size() < kFewestPoints) return std::nullopt;
  const auto count = static_cast<double>(points.size());
  cv::Point2d sum;
  for (const cv::Point2f p : points) sum += cv::Point2d(p);
  const cv::Point2d middle = sum / count;
  double xx = 0.0;
  double xy = 0.0;
  double yy = 0.0;
  for (const cv::Point2f p : points) {
    const cv::Point2d d = cv::Point2d(p) - middle;
    xx += d.x * d.x;
    xy += d.x * d.y;
    yy += d.y * d.y;
  }
  if (!(xx > 0.0)) return std::nullopt;
  const double k = xy / xx;
  return TSide{middle, k, std::max(0.0, (yy - k * xy) / count), points};
}

// Points left of a column and right of it, not farther away than the reach.
TPointView leftOf(TPointView points, float column) {
  const auto* const end =
      std::partition_point(points.begin(), points.end(), [&](auto p) { return p.x <= column; });
  const auto* const begin = std::partition_point(
      points.begin(), end, [&](auto p) { return p.x < column - static_cast<float>(kReachPx); });
  return {begin, static_cast<std::size_t>(end - begin)};
}

TPointView rightOf(TPointView points, float column) {
  const auto* const begin =
      std::partition_point(points.begin(), points.end(), [&](auto p) { return p.x < column; });
  const auto* const end = std::partition_point(
      begin, points.end(), [&](auto p) { return p.x <= column + static_cast<float>(kReachPx); });
  return {begin, static_cast<std::size_t>(end - begin)};
}

void addPoint(TJointMeasurement& m, TFeature feature, cv::Point2d pos, double sigmaPx) {
  m.points.push_back({feature, cv::Point2f(pos), static_cast<float>(sigmaPx)});
}

// Share of the frames like this one whose seam point is right to within three pixels: rises with the points on the
// scarcer side and falls with their scatter.
float confidenceOf(const TSide& left, const TSide& right) {
  const double points = static_cast<double>(std::min(left.points.size(), right.points.size()));
  const double clarity = points / (points + kSurePoints) / (1.0 + std::max(left.noise2, right.noise2));
  return static_cast<float>(1.0 - (1.0 - kRightAtLeast) * exactExp(-clarity / kClarityScale));
}

double crossingSigma(const TSeam& seam, const TSide& left, const TSide& right) {
  const double length2 = (1.0 + left.k * left.k) * (1.0 + right.k * right.k);
  const double sine = std::max(kLeastSine, std::abs(left.k - right.k) / std::sqrt(length2));
  const double ofCentres = std::sqrt(left.sigmaPx() * left.sigmaPx() + right.sigmaPx() * right.sigmaPx());
  return (seam.flankSigmaPx > 0.0 ? seam.flankSigmaPx : ofCentres) / sine;
}

// Root mean square of the columns by which holes of the stripe, other than that at the seam, cut an end short: an
// end falls into a hole with the hole's share of the columns, anywhere in it.
double unseenPx(const TSeam& seam) {
  const TPoints& points = seam.stripePts;
  double cubes = 0.0;
  for (std::size_t i = 1; i < points.size(); ++i) {
    const bool isAtSeam = points[i - 1].x <= seam.pos.x && seam.pos.x <= points[i].x;
    const double hole = isAtSeam ? 0.0 : static_cast<double>(points[i].x - points[i - 1].x) - 1.0;
    cubes += hole * hole * hole;
  }
  return std::sqrt(cubes / (3.0 * static_cast<double>(points.back().x - points.front().x)));
}

void setBase(TJointMeasurement& m, const TSide& left, const TSide& right) {
  m.leftAngleDeg = left.angleDeg();
  m.rightAngleDeg = right.angleDeg();
  m.baseAngleDeg = 0.5 * (m.leftAngleDeg + m.rightAngleDeg);
}

// Where the stripe goes on right of a seam: of one on the end of a piece, beyond the wider gap beside it.
const cv::Point2f* beyondBreak(TPointView points, float seamX) {
  const cv::Point2f* next =
      std::upper_bound(points.begin(), points.end(), seamX, [](float x, cv::Point2f p) { return x < p.x; });
  if (next - points.begin() < 2 || next == points.end()) return next;
  const cv::Point2f* const last = next - 1;
  const bool isRightEnd = last->x == seamX && last->x - (last - 1)->x > next->x - last->x;
  return isRightEnd ? last : next;
}

// A break of the stripe: the surfaces end on either side of the seam's column.
bool measureBreak(const TSeam& seam, bool isLap, TJointMeasurement& m) {
  const TPointView points = seam.stripePts;
  const cv::Point2f* const beyond = beyondBreak(points, seam.pos.x);
  if (beyond == points.begin() || beyond == points.end()) return false;
  const auto left = sideOf(leftOf(points, (beyond - 1)->x));
  const auto right = sideOf(rightOf(points, beyond->x));
  if (!left || !right) return false;
  setBase(m, *left, *right);
  const auto endAt = [](const TSide& side, cv::Point2f p) {
    return cv::Point2d(static_cast<double>(p.x), side.rowAt(static_cast<double>(p.x)));
  };
  const cv::Point2d leftEnd = seam.ends ? seam.ends->left : endAt(*left, left->points.back());
  const cv::Point2d rightEnd = seam.ends ? seam.ends->right : endAt(*right, right->points.front());
  const cv::Point2d across = rightEnd - leftEnd;
  const cv::Point2d base(1.0, 0.5 * (left->k + right->k));
  const double length = std::sqrt(base.dot(base));
  m.gapPx = across.dot(base) / length;
  const auto seamX = static_cast<double>(seam.pos.x);
  m.mismatchPx =
      isLap ? (across.y * base.x - across.x * base.y) / length : right->rowAt(seamX) - left->rowAt(seamX);
  const bool isLeftUpper = leftEnd.y <= rightEnd.y;
  const TFeature first =
      isLap ? (isLeftUpper ? TFeature::upperCorner : TFeature::lowerCorner) : TFeature::leftEdge;
  const TFeature second =
      isLap ? (isLeftUpper ? TFeature::lowerCorner : TFeature::upperCorner) : TFeature::rightEdge;
  const double hiddenPx = unseenPx(seam);
  const double edgePx = seam.ends ? kLitSigmaPx : kEdgeSigmaPx;
  const double alongPx = std::sqrt(edgePx * edgePx + hiddenPx * hiddenPx);
  m.points.reserve(2);
  addPoint(m, first, leftEnd, left->endSigmaPx(alongPx));
  addPoint(m, second, rightEnd, right->endSigmaPx(alongPx));
  m.confidence = confidenceOf(*left, *right);
  return true;
}

bool takeProfile(const TProfileFit& fit, TJointMeasurement& m) {
  const auto isFound = [](const TMeasuredPoint& p) { return p.isFound && p.sigmaPx <= kMostPointSigmaPx; };
  m.points.reserve(static_cast<std::size_t>(std::count_if(fit.features.begin(), fit.features.end(), isFound)));
  for (std::size_t i = 0; i < fit.features.size(); ++i) {
    const TMeasuredPoint& p = fit.features[i];
    if (isFound(p)) addPoint(m, static_cast<TFeature>(i), p.pos, p.sigmaPx);
  }
  m.confidence = static_cast<float>(fit.confidence);
  const TJointMeasures& from = fit.measures;
  m.widthPx = from.widthPx;
  m.depthPx = from.depthPx;
  m.gapPx = from.gapPx;
  m.mismatchPx = from.mismatchPx;
  m.areaPx2 = from.areaPx2;
  m.leftAngleDeg = from.leftAngleDeg;
  m.rightAngleDeg = from.rightAngleDeg;
  m.includedAngleDeg = from.includedAngleDeg;
  m.baseAngleDeg = from.baseAngleDeg;
  m.leftRadiusPx = from.leftRadiusPx;
  m.rightRadiusPx = from.rightRadiusPx;
  return true;
}

TJointMeasurement measureLine(const TLineMeasure& line) {
  TJointMeasurement m;
  m.isValid = true;
  m.confidence = line.confidence;
  if (line.widthPx > 0.0) m.widthPx = line.widthPx;
  m.baseAngleDeg = line.directionDeg;
  return m;
}

}  // namespace

bool measureGap(const TSeam& seam, TMemory* /*memory*/, TJointMeasurement& m) {
  return measureBreak(seam, false, m) && m.gapPx > 0.0;  // scraps of stripe beside a steep line have none
}

bool measureLap(const TSeam& seam, TMemory* /*memory*/, TJointMeasurement& m) {
  return measureBreak(seam, true, m);
}

bool measureCorner(const TSeam& seam, TMemory* /*memory*/, TJointMeasurement& m) {
  const auto left = sideOf(leftOf(seam.stripePts, seam.pos.x));
  const auto right = sideOf(rightOf(seam.stripePts, seam.pos.x));
  if (!left || !right) return false;
  setBase(m, *left, *right);
  m.includedAngleDeg = 180.0 - std::abs(m.leftAngleDeg - m.rightAngleDeg);
  m.baseAngleDeg = TJointMeasurement::kNone;
  addPoint(m, TFeature::corner, cv::Point2d(seam.pos), crossingSigma(seam, *left, *right));
  m.confidence = confidenceOf(*left, *right);
  return true;
}

bool measurePlate(const TSeam& seam, TMemory* /*memory*/, TJointMeasurement& m) {
  const auto all = sideOf(seam.stripePts);
  if (!all) return false;
  const auto endAt = [&](cv::Point2f p) {
    return cv::Point2d(static_cast<double>(p.x), all->rowAt(static_cast<double>(p.x)));
  };
  const cv::Point2d left = seam.ends ? seam.ends->left : endAt(seam.stripePts.front());
  const cv::Point2d right = seam.ends ? seam.ends->right : endAt(seam.stripePts.back());
  m.widthPx = std::sqrt((right - left).dot(right - left));
  m.baseAngleDeg = all->angleDeg();
  m.points.reserve(2);
  const double hiddenPx = unseenPx(seam);
  const double endPx = seam.ends && !seam.isFlush ? kLitSigmaPx : kEndSigmaPx;
  const double alongPx = std::sqrt(endPx * endPx + (seam.ends ? hiddenPx * hiddenPx : 0.0));
  const auto first = sideOf(rightOf(seam.stripePts, seam.stripePts.front().x));
  const auto last = sideOf(leftOf(seam.stripePts, seam.stripePts.back().x));
  addPoint(m, TFeature::leftEnd, left, (first ? *first : *all).endSigmaPx(alongPx));
  addPoint(m, TFeature::rightEnd, right, (last ? *last : *all).endSigmaPx(alongPx));
  m.confidence = confidenceOf(*all, *all);
  return true;
}

bool measureGroove(const TSeam& seam, TMemory* memory, TJointMeasurement& m) {
  if (seam.profile) return takeProfile(*seam.profile, m);
  const TStripeProfile stripe(seam.stripePts, {}, 0.0, memory);
  const TProfileFit fit = fitProfile(stripe, profilesOf(m.weldType), {}, memory);
  return fit.isFound() && takeProfile(fit, m);
}

TJointMeasurement measureSeam(const TSeam& seam, const TJoint* joint, TMemory* memory) {
  if (seam.isFound && seam.line) return measureLine(*seam.line);
  const bool isMeasured = joint != nullptr && joint->rules.measure != nullptr;
  if (!isMeasured || !seam.isFound || !isUsable(seam.pos)) return {};
  TJointMeasurement measured;
  measured.weldType = joint->info.type;
  if (!joint->rules.measure(seam, memory, measured)) return {};
  measured.isValid = true;
  return measured;
}

}  // namespace weld

TJointMeasurement measureJoint(const TWeldLineRes& result, const TWeldParams& params) {
  const std::vector<cv::Point2f>& points = result.stripePts;
  const bool areUsable = std::all_of(points.begin(), points.end(), weld::isUsable);
  const bool areSorted =
      std::is_sorted(points.begin(), points.end(), [](cv::Point2f a, cv::Point2f b) { return a.x < b.x; });
  if (!areUsable || !areSorted) return {};
  weld::TArena memory;
  weld::TSeam seam(weld::TPoints(result.stripePts.begin(), result.stripePts.end(), &memory));
  seam.isFound = result.isFound;
  seam.pos = result.weldPos;
  return weld::measureSeam(seam, weld::findJoint(params.weldType), &memory);
}
