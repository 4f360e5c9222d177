// Which stretches of atoms may be an element, and what they cost.
#include "profile/profile_search.h"
#include "support/arc_tangent.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kCostPerLine = 8.0;
constexpr double kCostPerArc = 11.2;
constexpr double kArcSharingOne = 6.4;  // a tangent shared with a neighbour takes a parameter away
constexpr double kArcSharingBoth = 3.2;
constexpr double kLeastChord = 0.4;  // columns of an arc over its length, seldom less
constexpr double kArcGain = 6.0;     // by which an arc must be cheaper than a line

double arcPenalty(const TElementRange& element) {
  if (element.isTouchingLeft && element.isTouchingRight) return kArcSharingBoth;
  return element.isTouchingLeft || element.isTouchingRight ? kArcSharingOne : kCostPerArc;
}

TElementEnd endOfLine(const TLine& line, double x, int sense, double angleDeg) {
  const double y = line.y + (x - line.x) * line.dy / std::max(line.dx, 1e-6);
  return {x, sense * y, angleDeg, line.dx, sense * line.dy};
}

TElementEnd endOfArc(const TCircle& circle, double x, int sense, double tangentDeg, bool isCentreBelow) {
  const double dx = std::clamp(x - circle.x, -circle.r, circle.r);
  const double height = std::sqrt(circle.r * circle.r - dx * dx);
  const double y = sense * circle.y + (isCentreBelow ? -height : height);
  const double sign = isCentreBelow ? 1.0 : -1.0;
  return {x, y, sense * tangentDeg, height / circle.r, sign * dx / circle.r};
}

bool takeLine(const TElementRange& element, int sense, const TLineEntry& entry, TElementChoice& choice) {
  const double angleDeg = sense * entry.angleDeg;
  if (!entry.isStraight || angleDeg < element.minAngleDeg || angleDeg > element.maxAngleDeg) return false;
  if (entry.lengthPx < element.minLengthPx || entry.lengthPx > element.maxLengthPx) return false;
  choice.lengthPx = entry.lengthPx;
  choice.angleDeg = angleDeg;
  choice.left = endOfLine(entry.line, entry.leftX, sense, angleDeg);
  choice.right = endOfLine(entry.line, entry.rightX, sense, angleDeg);
  return true;
}

bool takeArc(const TElementRange& element, int sense, const TLineEntry& chord, const TCircleEntry& entry,
             TElementChoice& choice) {
  if (!entry.isValid) return false;
  const TCircle& circle = entry.circle;
  if (circle.r < element.minRadiusPx || circle.r > element.maxRadiusPx) return false;
  // A centre below turns the tangent clockwise on the way to the right.
  const bool isCentreBelow = sense * (entry.endDeg - entry.startDeg) > 0.0;
  if (isCentreBelow != element.isCentreBelow) return false;
  choice.angleDeg = sense * 0.5 * (entry.startDeg + entry.endDeg);
  choice.left = endOfArc(circle, chord.leftX, sense, entry.startDeg, isCentreBelow);
  choice.right = endOfArc(circle, chord.rightX, sense, entry.endDeg, isCentreBelow);
  choice.lengthPx = circle.r * std::abs(entry.endDeg - entry.startDeg) / kDegPerRad;
  return choice.lengthPx >= element.minLengthPx && choice.lengthPx <= element.maxLengthPx;
}

}  // namespace

TList<TElementChoice> choicesOf(const TElementRange& element, int sense, TFitTable& table,
                                std::pmr::memory_resource* memory) {
  TList<TElementChoice> choices(memory);
  choices.reserve(static_cast<std::size_t>(table.atoms() * (table.atoms() + 1) / 2));
  for (int last = 1; last <= table.atoms(); ++last) {
    for (int first = 0; first < last; ++first) {
      const TLineEntry& line = table.line(first, last);
      TElementChoice choice;
      choice.first = first;
      choice.last = last;
      if (element.kind == TElementKind::line) {
        if (!takeLine(element, sense, line, choice)) continue;
        choice.cost = line.cost + kCostPerLine;
      } else {
        if (line.rightX - line.leftX < kLeastChord * element.minLengthPx) continue;
        const TCircleEntry& arc = table.circle(first, last);
        if (!takeArc(element, sense, line, arc, choice)) continue;
        if (line.isStraight && arc.cost + kArcGain > line.cost) continue;
        choice.cost = arc.cost + arcPenalty(element);
      }
      choices.push_back(choice);
    }
  }
  return choices;
}

const TList<TElementChoice>& TElementChoices::of(const TElementRange& element, int sense) {
  for (const TKnown& one : known) {
    if (one.sense == sense && one.element == element) return one.choices;
  }
  std::pmr::memory_resource* const memory = known.get_allocator().resource();
  if (known.size() == kMostKnown) known.pop_back();
  known.push_back({element, sense, choicesOf(element, sense, fits, memory)});
  return known.back().choices;
}

}  // namespace weld
