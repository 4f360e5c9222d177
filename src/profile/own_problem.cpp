// What makes a user's template none.
#include "profile/own_structure.h"
#include "zelWeldSettings.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr const char* kShapes[] = {"plate", "flank", "flat", "arc", "gap"};

// Any value may stand in a record that came from elsewhere.
template <typename T>
bool isListed(T value, T last) {
  return static_cast<std::int32_t>(value) >= 0 && value <= last;
}

bool isAny(const TJointRange& range) {
  return range.min == -TJointRange::kAny && range.max == TJointRange::kAny;
}

std::string nameOf(std::size_t element) {
  return "elements[" + std::to_string(element) + "]";
}

std::string problemOf(const TRangeRule& rule, const TJointElement& element) {
  const TJointRange& range = element.*rule.range;
  if (isAny(range)) return "";
  const char* const shape = kShapes[static_cast<std::size_t>(element.shape)];
  if (!rule.isReadBy(element.shape)) return std::string("has no meaning for a ") + shape;
  if (std::isnan(range.min) || std::isnan(range.max)) return "is not a number";
  const std::string limits = cv::format("%g to %g", range.min, range.max);
  if (range.min > range.max) return "is empty: " + limits;
  const bool isPossible = range.min <= rule.possible.max && range.max >= rule.possible.min;
  return isPossible ? "" : "can never hold: " + limits;
}

std::string problemOf(const TJointElement& element, std::size_t index) {
  if (!isListed(element.shape, TElementShape::gap)) return nameOf(index) + ".shape is unknown";
  if (!isListed(element.meeting, TElementMeeting::smooth)) return nameOf(index) + ".meeting is unknown";
  for (const TRangeRule& rule : kRangeRules) {
    const std::string problem = problemOf(rule, element);
    if (!problem.empty()) return nameOf(index) + "." + rule.name + " " + problem;
  }
  return "";
}

std::string problemOf(const TJointPoint& point, const TJointTemplate& joint, std::size_t index) {
  const std::string name = "points[" + std::to_string(index) + "]";
  if (!isListed(point.feature, TFeature::rightEnd)) return name + ".feature is unknown";
  if (!isListed(point.place, TJointPlace::deepest)) return name + ".place is unknown";
  const bool exists = point.element >= 0 && static_cast<std::size_t>(point.element) < joint.elements.size();
  if (!exists) return name + ".element: there is no such element";
  const TJointElement& element = joint.elements[static_cast<std::size_t>(point.element)];
  const bool hasDeepest = element.shape == TElementShape::arc ||
                          (element.meeting == TElementMeeting::rounded && element.shape != TElementShape::gap);
  if (point.place == TJointPlace::deepest && !hasDeepest)
    return name + ".place: only arcs and rounded corners have a deepest point";
  return "";
}

// Two neighbours, and the gap between them.
std::string problemOfMeeting(const TJointTemplate& joint, const TFormParts& parts, std::size_t at) {
  const TJointElement& left = joint.elements[parts.elements[at - 1]];
  const TJointElement& right = joint.elements[parts.elements[at]];
  const bool areStraight = left.shape != TElementShape::arc && right.shape != TElementShape::arc;
  const std::size_t gap = parts.gapBefore[at];
  if (gap != kNoGap) {
    const bool isRoot = gapKindOf(joint.elements[gap].stepPx) == TGapKind::root;
    return isRoot && !areStraight ? nameOf(gap) + ".stepPx: a gap beside an arc has to have one" : "";
  }
  const std::string name = nameOf(parts.elements[at]);
  if (right.meeting == TElementMeeting::smooth && areStraight) return name + " is smooth without an arc";
  if (right.meeting == TElementMeeting::rounded && !areStraight) return name + " is rounded beside an arc";
  return "";
}

std::string problemOf(const TFormParts& parts, const TJointTemplate& joint) {
  const std::size_t count = parts.elements.size();
  if (count < 2) return "a joint has two elements at least";
  if (parts.isBroken) return "a gap lies between two elements";
  for (std::size_t e = 0; e < count; ++e) {
    const bool isInside = e > 0 && e + 1 < count;
    const std::size_t element = parts.elements[e];
    if (isInside && joint.elements[element].shape == TElementShape::plate)
      return nameOf(element) + ": plates stand at the ends";
    if (e == 0) continue;
    std::string problem = problemOfMeeting(joint, parts, e);
    if (!problem.empty()) return problem;
  }
  const bool isTracked = std::any_of(joint.points.begin(), joint.points.end(), [&](const TJointPoint& point) {
    return point.feature == joint.tracked && placeOf(point, joint, parts).has_value();
  });
  return isTracked ? "" : std::string("tracked: no point is called ") + featureText(joint.tracked);
}

std::string problemOfCounts(const TJointTemplate& joint) {
  const auto& elements = joint.elements;
  const auto gaps = std::count_if(elements.begin(), elements.end(),
                                  [](const TJointElement& e) { return e.shape == TElementShape::gap; });
  const auto optional =
      std::count_if(elements.begin(), elements.end(), [](const TJointElement& e) { return e.isOptional; });
  if (elements.empty()) return "the joint has no elements";
  if (elements.size() - static_cast<std::size_t>(gaps) > kMostElements)
    return cv::format("the joint has more than %zu elements", kMostElements);
  if (elements.size() > kMostEntries) return "a gap lies between two elements";
  if (optional > static_cast<std::ptrdiff_t>(kMostOptional))
    return cv::format("more than %zu elements are optional", kMostOptional);
  return joint.lineTolerancePx > 0.0 ? "" : "lineTolerancePx is not above 0";
}

}  // namespace

}  // namespace weld

std::string findTemplateProblem(const TJointTemplate& joint) {
  std::string problem = weld::problemOfCounts(joint);
  for (std::size_t i = 0; i < joint.elements.size() && problem.empty(); ++i)
    problem = weld::problemOf(joint.elements[i], i);
  for (std::size_t i = 0; i < joint.points.size() && problem.empty(); ++i)
    problem = weld::problemOf(joint.points[i], joint, i);
  if (!problem.empty()) return problem;
  for (const weld::TFormParts& parts : weld::formsOf(joint)) {
    problem = weld::problemOf(parts, joint);
    if (!problem.empty()) break;
  }
  return problem;
}
