#include "profile/own_structure.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

// The elements but for those optional ones whose bit is not set.
TFormParts partsWith(const TJointTemplate& joint, unsigned kept) {
  TFormParts parts;
  std::size_t gap = kNoGap;
  unsigned optional = 0;
  for (std::size_t i = 0; i < joint.elements.size(); ++i) {
    const TJointElement& element = joint.elements[i];
    if (element.isOptional && ((kept >> optional++) & 1U) == 0) continue;
    if (element.shape == TElementShape::gap) {
      parts.isBroken = parts.isBroken || gap != kNoGap || parts.elements.empty();
      gap = i;
      continue;
    }
    parts.elements.push_back(i);
    parts.gapBefore.push_back(gap);
    gap = kNoGap;
  }
  parts.isBroken = parts.isBroken || gap != kNoGap;
  return parts;
}

}  // namespace

TGapKind gapKindOf(const TJointRange& stepPx) {
  if (std::isinf(stepPx.min) && std::isinf(stepPx.max)) return TGapKind::root;
  return stepPx.min > 0.0 || stepPx.max < 0.0 ? TGapKind::wall : TGapKind::hole;
}

std::vector<TFormParts> formsOf(const TJointTemplate& joint) {
  const auto optional = std::count_if(joint.elements.begin(), joint.elements.end(),
                                      [](const TJointElement& e) { return e.isOptional; });
  std::vector<TFormParts> forms;
  for (unsigned kept = 0; kept < 1U << optional; ++kept) forms.push_back(partsWith(joint, kept));
  return forms;
}

std::optional<TProfilePoint> placeOf(const TJointPoint& point, const TJointTemplate& joint,
                                     const TFormParts& parts) {
  const auto index = static_cast<std::size_t>(point.element);
  const bool isGap = joint.elements[index].shape == TElementShape::gap;
  const std::vector<std::size_t>& list = isGap ? parts.gapBefore : parts.elements;
  const auto found = std::find(list.begin(), list.end(), index);
  if (found == list.end()) return std::nullopt;
  const auto at = static_cast<std::size_t>(found - list.begin());
  const bool isRounding = point.place == TJointPlace::deepest && joint.elements[index].shape != TElementShape::arc;
  if (isRounding && at == 0) return std::nullopt;
  const bool isOfJunction = isGap || isRounding;
  return TProfilePoint{point.feature, point.place, isOfJunction ? at - 1 : at, isOfJunction};
}

}  // namespace weld
