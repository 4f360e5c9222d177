#include "profile/builtin_profiles.h"

namespace weld {

namespace {

using E = TElementRange;
using J = TJunctionRange;

constexpr double kSteepestTurnDeg = 100.0;
constexpr double kAny = 1e9;

constexpr E line(TElementRole role, double minDeg, double maxDeg, double minLengthPx) {
  return {TElementKind::line, role, minDeg, maxDeg, minLengthPx, kAny, 0.0, kAny, true, false, false};
}
constexpr E arc(double minRadiusPx, double maxRadiusPx, bool isCentreBelow, bool touchesLeft, bool touchesRight) {
  return {TElementKind::arc, TElementRole::round, -90.0,         90.0,        kLeastArcPx, kAny,
          minRadiusPx,       maxRadiusPx,         isCentreBelow, touchesLeft, touchesRight};
}

constexpr E kPlate = line(TElementRole::plate, -kMostPlateDeg, kMostPlateDeg, kLeastPlatePx);
constexpr E kDown = line(TElementRole::flank, -3.0, 90.0, kLeastFlankPx);
constexpr E kUp = line(TElementRole::flank, -90.0, 3.0, kLeastFlankPx);
constexpr E kSteepDown = line(TElementRole::flank, 35.0, 90.0, kLeastFlankPx);
constexpr E kSteepUp = line(TElementRole::flank, -90.0, -35.0, kLeastFlankPx);
constexpr E kFlat = line(TElementRole::flat, -kMostPlateDeg, kMostPlateDeg, kLeastFlatPx);

constexpr J kShoulder{TJunctionKind::cross, kLeastTurnDeg, kSteepestTurnDeg, 0.0, 0};
constexpr J kFoot{TJunctionKind::cross, -kSteepestTurnDeg, -kLeastTurnDeg, 0.0, 0};
constexpr J kRoundFoot{TJunctionKind::fillet, -kSteepestTurnDeg, -kLeastRoundedDeg, 0.0, 0};
constexpr J kRoot{TJunctionKind::root, -178.0, -kLeastRootDeg, 0.0, 0};
constexpr J kRoundRoot{TJunctionKind::fillet, -178.0, -60.0, 0.0, 0};
constexpr J kUpWall{TJunctionKind::jump, -180.0, 180.0, kLeastJumpPx, -1};
constexpr J kDownStep{TJunctionKind::jump, -180.0, 180.0, kLeastJumpPx, 1};
constexpr J kRootGap{TJunctionKind::hole, -12.0, 12.0, 0.0, 0};
// The search cuts between atoms: a step may look as much higher as it is low.
constexpr J kBackingBelow{TJunctionKind::jump, -180.0, 180.0, -8.0, 1};
constexpr J kBackingAbove{TJunctionKind::jump, -180.0, 180.0, -8.0, -1};
constexpr J kSmooth{TJunctionKind::tangent, -kMostSmoothDeg, kMostSmoothDeg, 0.0, 0};
constexpr J kCusp{TJunctionKind::cusp, -180.0, -40.0, 0.0, 0};
constexpr J kLineCusp{TJunctionKind::cusp, -180.0, -25.0, 0.0, 0};

constexpr E kBowl{
    TElementKind::arc, TElementRole::round, -90.0, 90.0, 50.0, kAny, 15.0, 600.0, false, false, false};
constexpr E kBowlInWalls = arc(kLeastRadiusPx, 600.0, false, true, true);
constexpr E kTubeAfterPlate = arc(20.0, 2000.0, true, true, false);
constexpr E kTubeBeforePlate = arc(20.0, 2000.0, true, false, true);
constexpr E kTube = arc(20.0, 2000.0, true, false, false);

constexpr TProfileTemplate kV[] = {
    {"V", TMeasuring::groove, 4, {{kPlate, kDown, kUp, kPlate}}, {{kShoulder, kRoot, kShoulder}}},
    {"V with a flat root",
     TMeasuring::groove,
     5,
     {{kPlate, kDown, kFlat, kUp, kPlate}},
     {{kShoulder, kFoot, kFoot, kShoulder}}},
    {"V over a backing",
     TMeasuring::groove,
     5,
     {{kPlate, kDown, kFlat, kUp, kPlate}},
     {{kShoulder, kBackingBelow, kBackingAbove, kShoulder}}},
};

constexpr TProfileTemplate kLeftBevel{
    "bevel on the left", TMeasuring::bevel, 3, {{kPlate, kDown, kPlate}}, {{kShoulder, kUpWall}}};
constexpr TProfileTemplate kLeftFlatBevel{"bevel on the left with a flat root",
                                          TMeasuring::bevel,
                                          4,
                                          {{kPlate, kDown, kFlat, kPlate}},
                                          {{kShoulder, kFoot, kUpWall}}};
constexpr TProfileTemplate kLeftBackedBevel{"bevel on the left over a backing",
                                            TMeasuring::bevel,
                                            4,
                                            {{kPlate, kDown, kFlat, kPlate}},
                                            {{kShoulder, kBackingBelow, kUpWall}}};
constexpr TProfileTemplate kBevel[] = {
    kLeftBevel,       mirrored(kLeftBevel, "bevel on the right"),
    kLeftFlatBevel,   mirrored(kLeftFlatBevel, "bevel on the right with a flat root"),
    kLeftBackedBevel, mirrored(kLeftBackedBevel, "bevel on the right over a backing"),
};

constexpr TProfileTemplate kLeftWalledU{
    "U without a right wall",
    TMeasuring::groove,
    4,
    {{kPlate, kSteepDown, arc(kLeastRadiusPx, 600.0, false, true, false), kPlate}},
    {{kShoulder, kSmooth, kShoulder}}};
constexpr TProfileTemplate kU[] = {
    {"U with a flat",
     TMeasuring::groove,
     5,
     {{kPlate, kSteepDown, kFlat, kSteepUp, kPlate}},
     {{kShoulder, kRoundFoot, kRoundFoot, kShoulder}}},
    {"U with a root gap",
     TMeasuring::groove,
     6,
     {{kPlate, kSteepDown, kFlat, kFlat, kSteepUp, kPlate}},
     {{kShoulder, kRoundFoot, kRootGap, kRoundFoot, kShoulder}}},
    {"U with a small arc",
     TMeasuring::groove,
     4,
     {{kPlate, kSteepDown, kSteepUp, kPlate}},
     {{kShoulder, kRoundRoot, kShoulder}}},
    {"U",
     TMeasuring::groove,
     5,
     {{kPlate, kSteepDown, kBowlInWalls, kSteepUp, kPlate}},
     {{kShoulder, kSmooth, kSmooth, kShoulder}}},
    {"U of an arc", TMeasuring::groove, 3, {{kPlate, kBowl, kPlate}}, {{kShoulder, kShoulder}}},
    kLeftWalledU,
    mirrored(kLeftWalledU, "U without a left wall"),
};

constexpr TProfileTemplate kLeftRoundedV{"flare V of a rounded plate and a tube",
                                         TMeasuring::flareV,
                                         3,
                                         {{kPlate, kTubeAfterPlate, kTube}},
                                         {{kSmooth, kCusp}}};
constexpr TProfileTemplate kFlareV[] = {
    {"flare V of rounded plates",
     TMeasuring::flareV,
     4,
     {{kPlate, kTubeAfterPlate, kTubeBeforePlate, kPlate}},
     {{kSmooth, kCusp, kSmooth}}},
    {"flare V of tubes", TMeasuring::flareV, 2, {{kTube, kTube}}, {{kCusp}}},
    kLeftRoundedV,
    mirrored(kLeftRoundedV, "flare V of a tube and a rounded plate"),
};

constexpr E kFlatMember = line(TElementRole::flank, -88.0, 30.0, 25.0);
constexpr TProfileTemplate kLeftTubeBevel{
    "flare bevel, tube on the left", TMeasuring::flareBevel, 2, {{kTube, kFlatMember}}, {{kLineCusp}}};
constexpr TProfileTemplate kLeftRoundedBevel{"flare bevel, rounded plate on the left",
                                             TMeasuring::flareBevel,
                                             3,
                                             {{kPlate, kTubeAfterPlate, kFlatMember}},
                                             {{kSmooth, kLineCusp}}};
constexpr TProfileTemplate kFlareBevel[] = {
    kLeftRoundedBevel,
    mirrored(kLeftRoundedBevel, "flare bevel, rounded plate on the right"),
    kLeftTubeBevel,
    mirrored(kLeftTubeBevel, "flare bevel, tube on the right"),
};

constexpr E kFlank = line(TElementRole::flank, -85.0, 85.0, 25.0);
constexpr TProfileTemplate kCorner[] = {
    {"corner", TMeasuring::corner, 2, {{kFlank, kFlank}}, {{{TJunctionKind::cross, -178.0, -15.0, 0.0, 0}}}}};
constexpr TProfileTemplate kLap[] = {{"lap", TMeasuring::lap, 2, {{kPlate, kPlate}}, {{kDownStep}}}};
constexpr TProfileTemplate kGap[] = {
    {"gap", TMeasuring::gap, 2, {{kPlate, kPlate}}, {{{TJunctionKind::hole, -12.0, 12.0, 0.0, 0}}}}};
constexpr TProfileTemplate kPlateOnly[] = {{"plate", TMeasuring::plate, 1, {{kFlank}}, {}}};
constexpr E kCurve{
    TElementKind::arc, TElementRole::round, -90.0, 90.0, 250.0, kAny, 250.0, kAny, true, false, false};
constexpr TProfileTemplate kNull[] = {
    {"plate", TMeasuring::plate, 1, {{kFlank}}, {}},
    {"curve", TMeasuring::none, 1, {{kCurve}}, {}},
};

}  // namespace

TTemplateView profilesOf(TWeldType weldType) {
  const auto all = [](const auto& list) { return TTemplateView(list, sizeof(list) / sizeof(list[0])); };
  switch (weldType) {
    case TWeldType::buttGap:
      return all(kGap);
    case TWeldType::lap:
      return all(kLap);
    case TWeldType::corner:
      return all(kCorner);
    case TWeldType::plate:
      return all(kPlateOnly);
    case TWeldType::uGroove:
      return all(kU);
    case TWeldType::vGroove:
      return all(kV);
    case TWeldType::singleBevel:
      return all(kBevel);
    case TWeldType::flareV:
      return all(kFlareV);
    case TWeldType::flareBevel:
      return all(kFlareBevel);
    default:
      return {};
  }
}

TTemplateView nullProfiles() {
  return {kNull, sizeof(kNull) / sizeof(kNull[0])};
}

}  // namespace weld
