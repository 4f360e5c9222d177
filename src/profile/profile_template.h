// What a joint looks like, as data: an ordered sequence of lines and arcs, and how each meets the next. Angles are
// those of a groove that opens upwards in the image (y down, a flank that descends to the right is positive); the
// other sense is tried by turning the stripe over.
#pragma once

#include "zelWeldTemplate.h"
#include "zelWeldTypes.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace weld {

inline constexpr std::size_t kMostElements = 7;
inline constexpr std::size_t kFeatures = static_cast<std::size_t>(TFeature::rightEnd) + 1;

// What elements and the ways they meet must be at least, of whatever joint.
inline constexpr double kMostPlateDeg = 32.0;  // tilt of a plate in the image
inline constexpr double kLeastPlatePx = 20.0;
inline constexpr double kLeastFlankPx = 15.0;
inline constexpr double kLeastFlatPx = 12.0;
inline constexpr double kLeastArcPx = 15.0;
inline constexpr double kLeastRadiusPx = 8.0;
inline constexpr double kLeastTurnDeg = 11.0;     // anything less is no corner
inline constexpr double kLeastRoundedDeg = 25.0;  // of a corner that may be rounded
inline constexpr double kLeastRootDeg = 20.0;     // between flanks that point at each other
inline constexpr double kMostSmoothDeg = 28.0;    // of a common tangent, before it is refined
inline constexpr double kLeastJumpPx = 6.0;

enum class TElementKind : std::uint8_t { line, arc };
enum class TElementRole : std::uint8_t { plate, flank, flat, round };

struct TElementRange {
  TElementKind kind = TElementKind::line;
  TElementRole role = TElementRole::plate;
  double minAngleDeg = -90.0;  // of a line
  double maxAngleDeg = 90.0;
  double minLengthPx = 15.0;  // along the element
  double maxLengthPx = 1e9;
  double minRadiusPx = 0.0;  // of an arc
  double maxRadiusPx = 1e9;
  bool isCentreBelow = true;     // of an arc: below it in the image, that is, inside the material
  bool isTouchingLeft = false;   // an arc that shares the tangent of its left neighbour
  bool isTouchingRight = false;  // and of its right one
};

inline bool operator==(const TElementRange& a, const TElementRange& b) {
  return a.kind == b.kind && a.minAngleDeg == b.minAngleDeg && a.maxAngleDeg == b.maxAngleDeg &&
         a.minLengthPx == b.minLengthPx && a.maxLengthPx == b.maxLengthPx && a.minRadiusPx == b.minRadiusPx &&
         a.maxRadiusPx == b.maxRadiusPx && a.isCentreBelow == b.isCentreBelow &&
         a.isTouchingLeft == b.isTouchingLeft && a.isTouchingRight == b.isTouchingRight;
}

enum class TJunctionKind : std::uint8_t {
  cross,    // the elements meet in a corner
  fillet,   // the same, the corner being rounded
  root,     // the corner lies beyond both ends: it may be open
  cusp,     // two arcs, or an arc and a line, that come close to one another; the last stretch is not seen
  jump,     // a step that shows no stripe
  hole,     // no step, columns without a stripe
  tangent,  // smooth
};

struct TJunctionRange {
  TJunctionKind kind = TJunctionKind::cross;
  double minTurnDeg = -180.0;  // angle of the right element minus that of the left one, at the junction
  double maxTurnDeg = 180.0;
  double minStepPx = 0.0;     // least height of a jump
  int step = 0;               // of a jump; 1: the right element starts lower, -1: higher
  double leastTurnDeg = 0.0;  // in either direction
};

// How the features are read off the elements.
enum class TMeasuring : std::uint8_t { groove, bevel, flareV, flareBevel, corner, lap, gap, plate, points, none };

// Where a feature lies, of a template that says so itself.
struct TProfilePoint {
  TFeature feature = TFeature::root;
  TJointPlace place = TJointPlace::start;
  std::size_t at = 0;  // element, or junction
  bool isOfJunction = false;
};

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order in which templates are written
struct TProfileTemplate {
  const char* name = "";
  TMeasuring measuring = TMeasuring::none;
  std::size_t elementCount = 0;
  std::array<TElementRange, kMostElements> elements{};
  std::array<TJunctionRange, kMostElements - 1> junctions{};  // one between each two elements
  TFeature tracked = TFeature::root;
  std::size_t pointCount = 0;
  std::array<TProfilePoint, kFeatures> points{};
};

constexpr TFeature mirrored(TFeature feature) {
  struct TSides {
    TFeature left;
    TFeature right;
  };
  constexpr TSides kSides[] = {{TFeature::leftRoot, TFeature::rightRoot},
                               {TFeature::leftShoulder, TFeature::rightShoulder},
                               {TFeature::leftEdge, TFeature::rightEdge},
                               {TFeature::leftEnd, TFeature::rightEnd}};
  for (const TSides& sides : kSides) {
    if (feature == sides.left) return sides.right;
    if (feature == sides.right) return sides.left;
  }
  return feature;
}

constexpr TProfilePoint mirrored(const TProfilePoint& point, std::size_t elementCount) {
  const TJointPlace place = point.place == TJointPlace::start ? TJointPlace::end
                            : point.place == TJointPlace::end ? TJointPlace::start
                                                              : point.place;
  const std::size_t last = point.isOfJunction ? elementCount - 2 : elementCount - 1;
  return {mirrored(point.feature), place, last - point.at, point.isOfJunction};
}

// The same joint seen in a mirror.
constexpr TProfileTemplate mirrored(const TProfileTemplate& from, const char* name) {
  TProfileTemplate to = from;
  to.name = name;
  for (std::size_t e = 0; e < from.elementCount; ++e) {
    const TElementRange& source = from.elements[from.elementCount - 1 - e];
    to.elements[e] = source;
    to.elements[e].minAngleDeg = -source.maxAngleDeg;
    to.elements[e].maxAngleDeg = -source.minAngleDeg;
    to.elements[e].isTouchingLeft = source.isTouchingRight;
    to.elements[e].isTouchingRight = source.isTouchingLeft;
  }
  for (std::size_t j = 0; j + 1 < from.elementCount; ++j) {
    to.junctions[j] = from.junctions[from.elementCount - 2 - j];
    to.junctions[j].step = -to.junctions[j].step;
  }
  to.tracked = mirrored(from.tracked);
  for (std::size_t p = 0; p < from.pointCount; ++p) to.points[p] = mirrored(from.points[p], from.elementCount);
  return to;
}

}  // namespace weld
