#include "profile/profile_layout.h"

#include <algorithm>

namespace weld {

namespace {

TLine turned(TLine line, int sense) {
  line.y *= sense;
  line.dy *= sense;
  return line;
}

double rowOn(const TLine& line, double x) {
  return line.y + (x - line.x) * line.dy / std::max(line.dx, 0.02);
}

void meetAt(std::size_t j, const TOrientedCentres& centres, TProfileLayout& layout) {
  TFittedElement& a = layout.elements[j];
  TFittedElement& b = layout.elements[j + 1];
  const auto isLine = [&](std::size_t e) { return layout.range(e).kind == TElementKind::line; };
  const TJunctionKind kind = layout.profile->junctions[j].kind;
  if (kind == TJunctionKind::cross && isLine(j) && isLine(j + 1)) {
    const std::optional<cv::Point2d> corner = crossingOf(a.lines.right, b.lines.left);
    if (!corner) return;
    a.right = b.left = *corner;
    a.span.last = b.span.first = std::clamp(centres.indexOf(corner->x), a.span.first, b.span.last);
  } else if (kind == TJunctionKind::root || kind == TJunctionKind::jump) {
    if (isLine(j)) a.right.y = rowOn(a.lines.right, a.right.x);
    if (isLine(j + 1)) b.left.y = rowOn(b.lines.left, b.left.x);
  }
}

}  // namespace

void meetAnew(const TOrientedCentres& centres, TProfileLayout& layout) {
  for (std::size_t j = 0; j + 1 < layout.count(); ++j) meetAt(j, centres, layout);
}

TProfileLayout layoutOf(const TProfileCut& cut, TFitTable& table) {
  TProfileLayout layout;
  layout.profile = cut.profile;
  layout.sense = cut.sense;
  layout.cost = cut.cost;
  for (std::size_t e = 0; e < cut.profile->elementCount; ++e) {
    TFittedElement& element = layout.elements[e];
    const TLineEntry& entry = table.line(cut.first[e], cut.last[e]);
    element.span = element.searched = table.span(cut.first[e], cut.last[e]);
    element.noise2 = entry.noise2;
    element.left.x = entry.leftX;
    element.right.x = entry.rightX;
    if (cut.profile->elements[e].kind == TElementKind::line) {
      const TLine line = turned(entry.line, cut.sense);
      element.lines = {line, line, line, true};
    } else {
      element.arc.circle = table.circle(cut.first[e], cut.last[e]).circle;
      element.arc.circle.y *= cut.sense;
    }
  }
  return layout;
}

}  // namespace weld
