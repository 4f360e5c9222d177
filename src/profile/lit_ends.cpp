#include "profile/lit_ends.h"

#include "profile/light_ray.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace weld {

namespace {

constexpr int kFarthestCentres = 250;  // looked at beyond an end
constexpr double kLeastOffPx = 2.5;    // from a flank, of a centre that is not its own
constexpr double kOffSigmas = 4.0;
constexpr double kBesidePx = 30.0;      // farther away the light of the flank is its own
constexpr int kOtherRun = 8;            // such centres in a row are another surface
constexpr double kHolePx = 2.5;         // columns between two runs of centres
constexpr double kTailCentres = 12.0;   // of a run that tell its direction
constexpr double kTurnCentres = 8.0;    // fewer tell none
constexpr double kForeignSlope = 0.35;  // against the flank
constexpr double kLeastStepPx = 1.2;
constexpr double kCourseShare = 0.75;  // of the step of one centre, that the course of a run shows as surely
constexpr double kCornerGain = 0.5;    // by which its centres lie nearer to a run that begins in a corner
constexpr double kSharpPx = 1.0;       // of a centre from the line in such a corner
constexpr double kLongestBackingPx = 60.0;
constexpr int kBlurCentres = 2;         // over which such a step may spread
constexpr double kLeastSeen = 0.5;      // of the course's step, that the centres show there
constexpr double kRunPerHole = 3.0;     // columns of a run, over those of the hole before it
constexpr double kCourseCentres = 6.0;  // that tell the course of a run beyond an end
constexpr double kLeastHolePx = 1.5;    // columns between such a run and the flank: a bent end has none
constexpr int kMostCrossing = 20;       // centres of a run that crosses a flank at its end
constexpr double kTailPx = 60.0;        // columns before an end in which a run of something else may begin
constexpr int kMostBent = 60;           // centres of a bent end
constexpr int kLeastBent = 6;
constexpr double kBendNoisePx = 1.0;  // by which it may turn back
constexpr double kFootPx = 40.0;      // of a flank, before the corner that its light must reach

// An end of a flank, and the centres about it.
class TFlankEnd {
public:
  TFlankEnd(const TOrientedCentres& c, const TFittedElement& flank, bool isRightEnd)
      : centres(c),
        line(isRightEnd ? flank.lines.right : flank.lines.left),
        side(isRightEnd ? 1 : -1),
        last(isRightEnd ? flank.span.last - 1 : flank.span.first),
        stepSigmaPx(kOffSigmas * std::sqrt(flank.noise2)),
        offPx(std::max(kLeastOffPx, stepSigmaPx)) {}

  cv::Point2d direction() const { return {side * line.dx, side * line.dy}; }

  // Takes a run off the end that only crosses the line, joined to it or behind a hole: it is a backing, or another
  // surface. Columns.
  double dropForeign() {
    const double endX = centres.at(last).x;
    int kept = beforeCrossing();
    for (int i = last; has(i - side) && std::abs(centres.at(i).x - endX) <= kTailPx; i -= side) {
      if (isBreak(i) && (isForeign(i) || isShort(i, endX)))
        kept = side > 0 ? std::min(kept, i - 1) : std::max(kept, i + 1);
    }
    last = kept;
    return std::abs(centres.at(kept).x - endX);
  }

  // Moves on to the last centre of a bent end, which goes on without a break, but steeper. Whether there is one.
  bool followBend() {
    int end = last;
    double deepest = 0.0;
    while (has(end + side) && std::abs(end + side - last) <= kMostBent && !isBreak(end + side)) {
      const double off = offsetOf(end + side);
      if (off < deepest - kBendNoisePx) break;
      deepest = std::max(deepest, off);
      end += side;
    }
    if (deepest < offPx || std::abs(end - last) < kLeastBent) return false;
    last = end;
    return true;
  }
  cv::Point2d lastCentre() const { return centres.at(last); }

  // Along the line, up to the centres of something else: the light there is theirs.
  double freePx(cv::Point2d end) const {
    if (endsInStep()) return 0.0;
    if (const std::optional<double> corner = cornerWithNext()) return alongTo(*corner, end);
    int off = 0;
    int first = last;
    for (int i = last + side; has(i); i += side) {
      const bool startsRun = isBreak(i);
      if (startsRun && std::abs(offsetOf(i)) < kBesidePx && isForeign(i)) return alongTo(i, end);
      if ((centres.at(i).x - end.x) * side <= 0.0) continue;
      if (!isBeside(i) || startsRun) off = 0;
      if (!isBeside(i)) continue;
      if (off == 0) first = i;
      if (++off < kOtherRun) continue;
      return alongTo(first, end);
    }
    return kFarthestCentres;
  }

private:
  bool has(int i) const { return i >= 0 && i < centres.count() && std::abs(i - last) < kFarthestCentres; }
  double offsetOf(int i) const { return line.offsetOf(centres.at(i).x, centres.at(i).y); }
  // From an end to a centre, less half a column.
  double alongTo(int i, cv::Point2d end) const { return alongTo(centres.at(i).x - 0.5 * side, end); }
  double alongTo(double x, cv::Point2d end) const {
    return std::max(0.0, (x - end.x) * side) / std::max(line.dx, 0.02);
  }
  bool isOff(int i) const { return std::abs(offsetOf(i)) > offPx; }
  bool isBeside(int i) const { return isOff(i) && std::abs(offsetOf(i)) < kBesidePx; }
  bool isStep(double px) const { return std::abs(px) > std::max(kLeastStepPx, stepSigmaPx); }
  bool hasHole(int i) const { return std::abs(centres.at(i).x - centres.at(i - side).x) > kLeastHolePx; }
  bool isBreak(int i) const {
    return std::abs(centres.at(i).x - centres.at(i - side).x) > kHolePx ||
           std::abs(offsetOf(i) - offsetOf(i - side)) > offPx;
  }

  // A line through the offsets of the centres that follow each other outwards.
  struct TCourse {
    double mean = 0.0;
    double meanX = 0.0;
    double slope = 0.0;  // per column
    bool isFound = false;
    double at(double x) const { return mean + slope * (x - meanX); }
  };
  TCourse courseFrom(int first) const {
    double n = 0.0, sumX = 0.0, sumXX = 0.0, sum = 0.0, sumX1 = 0.0;
    for (int i = first; has(i) && n < kTailCentres && (i == first || !isBreak(i)); i += side) {
      const double x = centres.at(i).x - centres.at(last).x;
      n += 1.0;
      sumX += x;
      sumXX += x * x;
      sum += offsetOf(i);
      sumX1 += x * offsetOf(i);
    }
    if (n < kCourseCentres) return {};
    TCourse course;
    course.slope = (sumX1 - sumX * sum / n) / (sumXX - sumX * sumX / n);
    course.mean = sum / n;
    course.meanX = centres.at(last).x + sumX / n;
    course.isFound = std::abs(course.slope) > kForeignSlope / std::max(line.dx, 0.02);
    return course;
  }

  // Whether a course that begins with this centre begins in a step beside the line and makes for it: a bent end
  // leaves the line without one.
  bool comesInStep(const TCourse& course, int first) const {
    const int before = first - kBlurCentres * side;
    if (!has(before)) return false;
    const double courseOff = course.at(centres.at(first).x);
    const double seen = (offsetOf(first) - offsetOf(before)) / courseOff;
    return isStep(courseOff / kCourseShare) && course.slope * side * courseOff < 0.0 && seen > kLeastSeen;
  }

  // The column in which a flatter run, no longer than a backing, meets the line in a sharp corner.
  std::optional<double> cornerWith(const TCourse& course) const {
    if (!course.isFound || std::abs(course.slope + line.dy) >= std::abs(line.dy)) return std::nullopt;
    const double x = course.meanX - course.mean / course.slope;
    int i = last;
    while (has(i - side) && (centres.at(i).x - x) * side > 0.0) i -= side;
    while (has(i + side) && (centres.at(i).x - x) * side < 0.0) i += side;
    if (std::abs(offsetOf(i)) >= kSharpPx) return std::nullopt;
    while (has(i + side) && !isBreak(i + side)) i += side;
    return std::abs(centres.at(i).x - x) <= kLongestBackingPx ? std::make_optional(x) : std::nullopt;
  }

  // The last centre before a run that crosses the line at its end, behind a hole or a step, or in a corner to
  // something flatter: what lies nearer to that run's own course is the run's.
  int beforeCrossing() const {
    const TCourse course = courseFrom(last);
    if (!course.isFound) return last;
    const bool isCorner = cornerWith(course).has_value();
    const double most = offPx * offPx;
    double gain = 0.0;
    double highest = 0.0;
    double best = 0.0;
    int kept = last;
    for (int i = last; has(i - side) && std::abs(i - last) < kMostCrossing; i -= side) {
      const double off = offsetOf(i);
      const double beside = off - course.at(centres.at(i).x);
      gain += std::min(off * off, most) - std::min(beside * beside, most);
      highest = std::max(highest, gain);
      const bool turns = gain == highest && (comesInStep(course, i) || (isCorner && gain > kCornerGain * most));
      if (gain > best && (hasHole(i) || turns)) best = gain, kept = i - side;
    }
    return kept;
  }

  // Whether the very next centres, which follow each other, lie beside the line, or on a course that crosses it:
  // the stripe goes on, on another surface.
  bool endsInStep() const {
    const int next = last + side;
    if (!has(next + side) || std::abs(centres.at(next).x - centres.at(last).x) > kHolePx) return false;
    const double stepPx = offsetOf(next) - offsetOf(last);
    if (isStep(stepPx) && std::abs(offsetOf(next + side) - offsetOf(next)) < 0.5 * std::abs(stepPx)) return true;
    const TCourse course = courseFrom(next);
    return course.isFound && comesInStep(course, next);
  }

  // The column in which a flatter run crosses the line that the very next centres belong to.
  std::optional<double> cornerWithNext() const {
    const int next = last + side;
    if (!has(next) || std::abs(centres.at(next).x - centres.at(last).x) > kHolePx) return std::nullopt;
    return cornerWith(courseFrom(next));
  }

  // Whether the run from this centre to the end is short beside the hole before it.
  bool isShort(int first, double endX) const {
    const double holePx = std::abs(centres.at(first).x - centres.at(first - side).x) - 1.0;
    return std::abs(endX - centres.at(first).x) + 1.0 < kRunPerHole * holePx;
  }

  // Whether the run that begins with this centre begins off the line, or leaves it.
  bool isForeign(int first) const {
    double count = 0.0;
    double farthest = 0.0;
    double sumT = 0.0, sumTT = 0.0, sumOff = 0.0, sumTOff = 0.0;
    for (int i = first; has(i) && count < kTailCentres; i += side) {
      if (i != first && std::abs(offsetOf(i) - offsetOf(i - side)) > offPx) break;
      const double t = line.alongOf(centres.at(i).x, centres.at(i).y);
      const double off = offsetOf(i);
      count += 1.0;
      farthest = std::max(farthest, std::abs(off));
      sumT += t;
      sumTT += t * t;
      sumOff += off;
      sumTOff += t * off;
    }
    const double spread = sumTT - sumT * sumT / count;
    const bool turns = count >= kTurnCentres && farthest > offPx &&
                       std::abs(sumTOff - sumT * sumOff / count) > kForeignSlope * std::max(spread, 1.0);
    return turns || (count >= kTurnCentres && std::abs(sumOff) > offPx * count);
  }

  const TOrientedCentres& centres;
  const TLine& line;
  int side;
  int last;
  double stepSigmaPx;
  double offPx;
};

void settle(const TFrame& frame, int sense, TFlankEnd flank, cv::Point2d& end) {
  const cv::Point2d direction = flank.direction();
  const double foreignPx = flank.dropForeign();
  if (foreignPx > 0.0) {
    end -= direction * (foreignPx / std::max(std::abs(direction.x), 0.02));
  } else if (flank.followBend()) {
    end = flank.lastCentre();
    return;
  }
  const TLightRay ray(frame.image, {end.x, sense * end.y}, {direction.x, sense * direction.y});
  end += ray.litPx(flank.freePx(end)) * direction;
}

// Whether a flank is lit up to the corner that it makes with a flat.
bool isFootLit(const TFrame& frame, int sense, const TFittedElement& flank, bool isRightEnd) {
  const TLine& line = isRightEnd ? flank.lines.right : flank.lines.left;
  const double side = isRightEnd ? 1.0 : -1.0;
  const cv::Point2d along(side * line.dx, side * line.dy);
  const cv::Point2d length = flank.right - flank.left;
  const double backPx = std::min(kFootPx, 0.5 * std::sqrt(length.dot(length)));
  const cv::Point2d from = (isRightEnd ? flank.right : flank.left) - backPx * along;
  return !TLightRay(frame.image, {from.x, sense * from.y}, {along.x, sense * along.y}).hasDarkColumn(backPx);
}

bool endsInTheDark(TJunctionKind kind) {
  return kind == TJunctionKind::root || kind == TJunctionKind::jump;
}

}  // namespace

bool areFeetLit(const TFrame& frame, const TProfileLayout& layout) {
  const auto isOf = [&](std::size_t e, TElementRole role) { return layout.range(e).role == role; };
  for (std::size_t j = 0; j + 1 < layout.count(); ++j) {
    if (layout.profile->junctions[j].kind != TJunctionKind::cross) continue;
    const bool isLeft = isOf(j, TElementRole::flank) && isOf(j + 1, TElementRole::flat);
    const bool isRight = isOf(j, TElementRole::flat) && isOf(j + 1, TElementRole::flank);
    if (isLeft && !isFootLit(frame, layout.sense, layout.elements[j], true)) return false;
    if (isRight && !isFootLit(frame, layout.sense, layout.elements[j + 1], false)) return false;
  }
  return true;
}

void extendToLight(const TFrame& frame, const TOrientedCentres& centres, TProfileLayout& layout) {
  for (std::size_t j = 0; j + 1 < layout.count(); ++j) {
    if (!endsInTheDark(layout.profile->junctions[j].kind)) continue;
    if (layout.range(j).role == TElementRole::flank) {
      TFittedElement& left = layout.elements[j];
      settle(frame, layout.sense, {centres, left, true}, left.right);
    }
    if (layout.range(j + 1).role == TElementRole::flank) {
      TFittedElement& right = layout.elements[j + 1];
      settle(frame, layout.sense, {centres, right, false}, right.left);
    }
  }
}

}  // namespace weld
