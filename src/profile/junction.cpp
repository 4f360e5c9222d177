// Whether two elements may be neighbours, and what leaving out the centres between them costs.
#include "profile/profile_search.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kSkipCost = 2.0 / 3.0;        // of a centre that belongs to nothing
constexpr double kFilletSkipCost = 0.5 / 3.0;  // in a rounded corner
constexpr double kFreeCost = 1.2 / 3.0;
constexpr double kCornerTolPx = 10.0;  // by which a corner may miss the end of an element
constexpr double kTolPerNoise = 4.0;
constexpr double kTolPerLength = 0.1;
constexpr double kTangentTolPx = 6.0;
constexpr double kTangentTolPerPx = 0.15;  // over what lies between the elements
constexpr double kHoleStepPx = 8.0;
constexpr double kLeastHolePx = 3.0;
constexpr double kParallel = 0.03;  // sine

struct TMeeting {
  // cppcheck-suppress unusedStructMember ; read where junctions are compared
  double turnDeg;
  double dx;  // from the end of the left to the start of the right element
  double dy;
  double tolPx;
};

bool meets(const TElementEnd& a, const TElementEnd& b, const TMeeting& m, bool mayBeOpen) {
  const double sine = a.dx * b.dy - a.dy * b.dx;
  if (std::abs(sine) < kParallel) return false;
  const double beyondLeft = (m.dx * b.dy - m.dy * b.dx) / sine;    // along the left element, from its end
  const double beforeRight = (m.dx * a.dy - m.dy * a.dx) / -sine;  // along the right element, before its start
  if (beyondLeft < -m.tolPx || beforeRight < -m.tolPx) return false;
  const double mostPx = m.tolPx + std::sqrt(m.dx * m.dx + m.dy * m.dy);
  return mayBeOpen || (beyondLeft <= mostPx && beforeRight <= mostPx);
}

bool isSmooth(const TElementEnd& a, const TElementEnd& b, const TMeeting& m, double noisePx) {
  const double left = a.dx > 0.05 ? 0.5 * m.dx * a.dy / a.dx : 0.5 * m.dy;
  const double right = b.dx > 0.05 ? 0.5 * m.dx * b.dy / b.dx : 0.5 * m.dy;
  const double miss = std::abs(m.dy - left - right) * std::min(a.dx, b.dx);
  const double between = std::sqrt(m.dx * m.dx + m.dy * m.dy);
  return miss <= kTangentTolPx + kTolPerNoise * noisePx + kTangentTolPerPx * between;
}

bool canMeet(const TJunctionRange& junction, const TElementEnd& a, const TElementEnd& b, const TMeeting& m,
             double noisePx) {
  switch (junction.kind) {
    case TJunctionKind::cross:
    case TJunctionKind::fillet:
      return meets(a, b, m, false);
    case TJunctionKind::root:
      return meets(a, b, m, true);
    case TJunctionKind::jump:
      return junction.step * m.dy >= junction.minStepPx + 3.0 * noisePx;
    case TJunctionKind::hole:
      return std::abs(m.dy) <= kHoleStepPx + 3.0 * noisePx && m.dx >= kLeastHolePx;
    case TJunctionKind::tangent:
      return isSmooth(a, b, m, noisePx);
    case TJunctionKind::cusp:
      return true;
  }
  return false;
}

}  // namespace

std::optional<double> junctionCost(const TJunctionRange& junction, const TElementChoice& left,
                                   const TElementChoice& right, const TFitTable& table) {
  const TElementEnd& a = left.right;
  const TElementEnd& b = right.left;
  const double turnDeg = b.angleDeg - a.angleDeg;
  if (turnDeg < junction.minTurnDeg || turnDeg > junction.maxTurnDeg) return std::nullopt;
  if (std::abs(turnDeg) < junction.leastTurnDeg) return std::nullopt;
  const double tolPx =
      kCornerTolPx + kTolPerNoise * table.noisePx() + kTolPerLength * std::min(left.lengthPx, right.lengthPx);
  const TMeeting meeting{turnDeg, b.x - a.x, b.y - a.y, tolPx};
  if (!canMeet(junction, a, b, meeting, table.noisePx())) return std::nullopt;
  const int skipped = right.first > left.last ? table.centresOf(left.last, right.first) : 0;
  return skipped * (junction.kind == TJunctionKind::fillet ? kFilletSkipCost : kSkipCost);
}

double freeEndCost(int centres) {
  return kFreeCost * centres;
}

}  // namespace weld
