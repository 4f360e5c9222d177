// What a user's template says, before the engine sees it: its ranges, its forms and where its points lie.
#pragma once

#include "profile/profile_template.h"

#include <limits>
#include <optional>
#include <vector>

namespace weld {

inline constexpr std::size_t kMostOptional = 2;
inline constexpr std::size_t kMostEntries = 2 * kMostElements - 1;  // elements, and gaps between them
inline constexpr std::size_t kNoGap = std::numeric_limits<std::size_t>::max();

// One range of an element: which shapes read it, and what its values can be.
struct TRangeRule {
  const char* name;
  TJointRange TJointElement::*range;
  unsigned shapes;  // one bit each
  TJointRange possible;

  bool isReadBy(TElementShape shape) const { return ((shapes >> static_cast<unsigned>(shape)) & 1U) != 0; }
};

enum class TOwnRange : std::size_t { angle, length, radius, turn, width, step };
inline constexpr std::size_t kOwnRanges = 6;

constexpr unsigned bitOf(TElementShape shape) {
  return 1U << static_cast<unsigned>(shape);
}
inline constexpr unsigned kStraight =
    bitOf(TElementShape::plate) | bitOf(TElementShape::flank) | bitOf(TElementShape::flat);
inline constexpr unsigned kSeen = kStraight | bitOf(TElementShape::arc);
inline constexpr unsigned kUnseen = bitOf(TElementShape::gap);

inline constexpr TRangeRule kRangeRules[kOwnRanges] = {
    {"angleDeg", &TJointElement::angleDeg, kStraight, {-90.0, 90.0}},
    {"lengthPx", &TJointElement::lengthPx, kSeen, {kLeastFlatPx, TJointRange::kAny}},
    {"radiusPx", &TJointElement::radiusPx, bitOf(TElementShape::arc), {kLeastRadiusPx, TJointRange::kAny}},
    {"turnDeg", &TJointElement::turnDeg, kSeen, {-180.0, 180.0}},
    {"widthPx", &TJointElement::widthPx, kUnseen, {0.0, TJointRange::kAny}},
    {"stepPx", &TJointElement::stepPx, kUnseen, {}},
};

enum class TGapKind : std::uint8_t { root, wall, hole };
TGapKind gapKindOf(const TJointRange& stepPx);

// A template without some or all of its optional elements, as indices.
struct TFormParts {
  std::vector<std::size_t> elements;   // without the gaps
  std::vector<std::size_t> gapBefore;  // of each element; kNoGap: none
  bool isBroken = false;               // a gap at an end or beside another one
};

// The plainest first.
std::vector<TFormParts> formsOf(const TJointTemplate& joint);

// Where a point lies in a form; nothing where its element is missing.
std::optional<TProfilePoint> placeOf(const TJointPoint& point, const TJointTemplate& joint,
                                     const TFormParts& parts);

}  // namespace weld
