// Which field of TWeldParams holds which setting.
#include "zelWeldSettings.h"

#include "zelWeldDetect.h"

namespace {

// Each joint's fields, once: `copy` carries a setting over in the one direction or the other.

template <typename TSettings, typename TParams, typename TCopy>
void linkGap(TSettings& s, TParams& p, TCopy copy) {
  copy(s.lineTolerancePx, p.dPara2);
  copy(s.minLineShare, p.dPara3);
  copy(s.fitScalePx, p.dPara4);
  copy(s.minGapPx, p.dPara8);
  copy(s.stripeAngleDeg, p.angleRange4);
}

template <typename TSettings, typename TParams, typename TCopy>
void linkLap(TSettings& s, TParams& p, TCopy copy) {
  copy(s.minEdgeDrop, p.dPara1);
  copy(s.supportPx, p.dPara2);
  copy(s.minPiecePx, p.dPara6);
  copy(s.minStepPx, p.dPara7);
}

template <typename TSettings, typename TParams, typename TCopy>
void linkCorner(TSettings& s, TParams& p, TCopy copy) {
  copy(s.flankTolerancePx, p.dPara2);
  copy(s.minFlankShare, p.dPara3);
  copy(s.fitScalePx, p.dPara4);
  copy(s.minFlankPoints, p.dPara6);
  copy(s.maxMissingColumns, p.nPara1);
  copy(s.leftFlankDeg.min, p.angleRange1Min);
  copy(s.leftFlankDeg.max, p.angleRange1Max);
  copy(s.rightFlankDeg.min, p.angleRange2Min);
  copy(s.rightFlankDeg.max, p.angleRange2Max);
  copy(s.includedAngleDeg.min, p.angleRange5Min);
  copy(s.includedAngleDeg.max, p.angleRange5Max);
  copy(s.solidShare, p.dPara10);
  copy(s.maxBreakColumns, p.nPara5);
  copy(s.allowsGap, p.haveGap);
}

template <typename TSettings, typename TParams, typename TCopy>
void linkPlate(TSettings& s, TParams& p, TCopy copy) {
  copy(s.minEdgeDrop, p.dPara1);
  copy(s.supportPx, p.dPara2);
  copy(s.minPiecePx, p.dPara6);
  copy(s.minWidthPx, p.dPara9);
  copy(s.plateAngleDeg.min, p.angleRange0Min);
  copy(s.plateAngleDeg.max, p.angleRange0Max);
}

template <typename TSettings, typename TParams, typename TCopy>
void linkGroove(TSettings& s, TParams& p, TCopy copy) {
  copy(s.joint, p.weldType);
  copy(s.lineTolerancePx, p.dPara2);
  copy(s.minElementPx, p.dPara6);
  copy(s.minDepthPx, p.dPara7);
  copy(s.maxClosedGapPx, p.dPara8);
  copy(s.minWidthPx, p.dPara9);
  copy(s.leftFlankDeg.min, p.angleRange1Min);
  copy(s.leftFlankDeg.max, p.angleRange1Max);
  copy(s.rightFlankDeg.min, p.angleRange2Min);
  copy(s.rightFlankDeg.max, p.angleRange2Max);
  copy(s.includedAngleDeg.min, p.angleRange5Min);
  copy(s.includedAngleDeg.max, p.angleRange5Max);
  copy(s.allowsGap, p.haveGap);
}

template <typename TSettings, typename TParams, typename TCopy>
void linkPresence(TSettings& s, TParams& p, TCopy copy) {
  copy(s.usesRidges, p.flagPara1);
  copy(s.searchesNear, p.flagPara2);
}

constexpr auto kIntoParams = [](const auto& setting, auto& field) { field = setting; };
constexpr auto kIntoSettings = [](auto& setting, const auto& field) { setting = field; };

TWeldParams initialised(TWeldType type, TWeldPosType pos) {
  TWeldParams params;
  initWeldParameters(type, params, pos);
  return params;
}

}  // namespace

TWeldParams TGapSettings::params(TWeldPosType pos) const {
  TWeldParams params = initialised(TWeldType::buttGap, pos);
  linkGap(*this, params, kIntoParams);
  return params;
}

TGapSettings TGapSettings::of(const TWeldParams& params) {
  TGapSettings settings;
  linkGap(settings, params, kIntoSettings);
  return settings;
}

TWeldParams TLapSettings::params(TWeldPosType pos) const {
  TWeldParams params = initialised(TWeldType::lap, pos);
  linkLap(*this, params, kIntoParams);
  return params;
}

TLapSettings TLapSettings::of(const TWeldParams& params) {
  TLapSettings settings;
  linkLap(settings, params, kIntoSettings);
  return settings;
}

TWeldParams TCornerSettings::params(TWeldPosType pos) const {
  TWeldParams params = initialised(TWeldType::corner, pos);
  linkCorner(*this, params, kIntoParams);
  return params;
}

TCornerSettings TCornerSettings::of(const TWeldParams& params) {
  TCornerSettings settings;
  linkCorner(settings, params, kIntoSettings);
  return settings;
}

TWeldParams TCornerPreset::applyTo(const TWeldParams& params) const {
  TCornerSettings corner = TCornerSettings::of(params);
  corner.leftFlankDeg = settings.leftFlankDeg;
  corner.rightFlankDeg = settings.rightFlankDeg;
  corner.includedAngleDeg = settings.includedAngleDeg;
  return corner.params(params.weldPosType);
}

const std::vector<TCornerPreset>& cornerPresets() {
  const auto preset = [](const char* name, const char* meaning, TAngleRange left, TAngleRange right,
                         TAngleRange included) {
    TCornerSettings settings;
    settings.leftFlankDeg = left;
    settings.rightFlankDeg = right;
    settings.includedAngleDeg = included;
    return TCornerPreset{name, meaning, settings};
  };
  static const std::vector<TCornerPreset> presets = {
      preset("valley", "left flank falling, right one rising", {0.0, 45.0}, {-45.0, 0.0}, {90.0, 178.0}),
      preset("roof", "left flank rising, right one falling", {-45.0, 0.0}, {0.0, 45.0}, {90.0, 178.0}),
      preset("fillet", "floor on the left, wall on the right", {-20.0, 20.0}, {-80.0, -30.0}, {30.0, 150.0}),
      preset("filletLeft", "wall on the left, floor on the right", {30.0, 80.0}, {-20.0, 20.0}, {30.0, 150.0}),
      preset("flatBend", "both flanks nearly level", {-30.0, 30.0}, {-30.0, 30.0}, {150.0, 179.5})};
  return presets;
}

TWeldParams TPlateSettings::params(TWeldPosType pos) const {
  TWeldParams params = initialised(TWeldType::plate, pos);
  linkPlate(*this, params, kIntoParams);
  return params;
}

TPlateSettings TPlateSettings::of(const TWeldParams& params) {
  TPlateSettings settings;
  linkPlate(settings, params, kIntoSettings);
  return settings;
}

TWeldParams TGrooveSettings::params(TWeldPosType pos) const {
  TWeldParams params = initialised(joint, pos);
  linkGroove(*this, params, kIntoParams);
  return params;
}

TGrooveSettings TGrooveSettings::of(const TWeldParams& params) {
  TGrooveSettings settings;
  linkGroove(settings, params, kIntoSettings);
  return settings;
}

TWeldParams TPresenceSettings::params() const {
  TWeldParams params = initialised(TWeldType::stripePresence, TWeldPosType::centre);
  linkPresence(*this, params, kIntoParams);
  return params;
}

TPresenceSettings TPresenceSettings::of(const TWeldParams& params) {
  TPresenceSettings settings;
  linkPresence(settings, params, kIntoSettings);
  return settings;
}
