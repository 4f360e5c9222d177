#include "profile/profile_layout.h"

namespace weld {

namespace {

TLine turned(TLine line, int sense) {
  line.y *= sense;
  line.dy *= sense;
  return line;
}

}  // namespace

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
