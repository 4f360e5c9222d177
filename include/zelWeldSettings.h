// The joints and their settings under names that say what they are. Include zelWeldDetect.h rather than this.
//
// TWeldParams numbers its fields, and each joint reads its own choice of them. Here every joint has a record of
// its settings, which fills a TWeldParams, and a row in a table, which lists them for programs.
#pragma once

#include "zelWeldDetectExport.h"
#include "zelWeldJoint.h"
#include "zelWeldTypes.h"

#include <cstdint>
#include <string>
#include <vector>

// Every record has the joint's defaults. `params` gives the parameters of the joint for a position; `of` reads the
// settings back. Values are not checked: what is out of range finds nothing. docs/parameters.md draws them.

// A straight stripe broken by a gap.
struct ZELWELDDETECT_EXPORT TGapSettings {
  double lineTolerancePx = 5.0;  // stripe points nearer than this to the line take part in the gap search; > 0
  double minLineShare = 0.1;     // first detection: smallest share of the stripe points on the line; 0..1
  double fitScalePx = 2.0;       // tracking: scale of the robust line fit; > 0
  double minGapPx = 10.0;        // smallest gap (N missing columns measure N + 1); >= 1
  TAngleRange stripeAngleDeg{-45.0, 45.0};  // first detection: angle of the stripe

  // Fills the parameters of the joint; values are not checked.
  TWeldParams params(TWeldPosType pos = TWeldPosType::centre) const;
  // Reads the settings back, whatever the parameters hold.
  static TGapSettings of(const TWeldParams& params);
};

// Two pieces displaced in height.
struct ZELWELDDETECT_EXPORT TLapSettings {
  double minEdgeDrop = 30.0;  // brightness drop that moves the end of a piece; grey levels, 0..255
  double supportPx = 5.0;     // stripe points nearer than this to a piece support it; > 0
  double minPiecePx = 50.0;   // length that both pieces must exceed; >= 0
  double minStepPx = 20.0;    // height that the step must exceed; >= 0

  // Fills the parameters of the joint; values are not checked.
  TWeldParams params(TWeldPosType pos = TWeldPosType::centre) const;
  // Reads the settings back, whatever the parameters hold.
  static TLapSettings of(const TWeldParams& params);
};

// Two flanks that meet in one corner.
struct ZELWELDDETECT_EXPORT TCornerSettings {
  double flankTolerancePx = 5.0;  // stripe points nearer than this to a flank belong to it; > 0
  double minFlankShare = 0.1;     // points on a flank; points per column that the better one must exceed; 0..1
  double fitScalePx = 2.0;        // scale of the robust line fit; > 0
  double minFlankPoints = 50.0;   // that the better flank must exceed; >= 0
  std::int32_t maxMissingColumns = 10;    // columns without stripe around the corner must stay below this; >= 1
  TAngleRange leftFlankDeg{0.0, 45.0};    // exclusive bounds in either order, here and below
  TAngleRange rightFlankDeg{-45.0, 0.0};  // degrees
  TAngleRange includedAngleDeg{90.0, 178.0};  // degrees
  double solidShare = 0.3;            // of each flank, counted from the corner, that must be unbroken; 0..1
  std::int32_t maxBreakColumns = 10;  // longest break accepted there; >= 0
  bool allowsGap = true;              // false: demands stripe on both sides of the corner

  // Fills the parameters of the joint; values are not checked.
  TWeldParams params(TWeldPosType pos = TWeldPosType::centre) const;
  // Reads the settings back, whatever the parameters hold.
  static TCornerSettings of(const TWeldParams& params);
};

// A way in which a corner may stand in the image.
struct TCornerPreset {
  const char* name = "";     // "roof"
  const char* meaning = "";  // how its flanks run
  TCornerSettings settings;  // its angles, the rest at the defaults

  // The parameters of a corner, standing so; a corner also where they are of another joint;
  // values are not checked.
  ZELWELDDETECT_EXPORT TWeldParams applyTo(const TWeldParams& params) const;
};

// valley (the defaults), roof, fillet, filletLeft, flatBend.
ZELWELDDETECT_EXPORT const std::vector<TCornerPreset>& cornerPresets();

// One plate that stands out of its surroundings.
struct ZELWELDDETECT_EXPORT TPlateSettings {
  double minEdgeDrop = 30.0;               // brightness drop that moves an end; grey levels, 0..255
  double supportPx = 5.0;                  // stripe points nearer than this to the piece support it; > 0
  double minPiecePx = 50.0;                // length that the piece must exceed; >= 0
  double minWidthPx = 50.0;                // smallest distance between the two ends; >= 0
  TAngleRange plateAngleDeg{-10.0, 10.0};  // exclusive bounds

  // Fills the parameters of the joint; values are not checked.
  TWeldParams params(TWeldPosType pos = TWeldPosType::centre) const;
  // Reads the settings back, whatever the parameters hold.
  static TPlateSettings of(const TWeldParams& params);
};

// The five grooves. Angles are those of the flanks in the image, in either order; with both flank ranges at their
// defaults every flank of 10 to 88 degrees counts, in grooves that open upwards or downwards in the image.
struct ZELWELDDETECT_EXPORT TGrooveSettings {
  TWeldType joint = TWeldType::vGroove;  // uGroove, vGroove, singleBevel, flareV or flareBevel
  double lineTolerancePx = 5.0;          // largest root mean square of the stripe about a flank or an arc; > 0
  double minElementPx = 50.0;            // shortest flank, or arc of a flare joint; >= 0
  double minDepthPx = 20.0;              // least depth of the root below the shoulders; >= 0
  double maxClosedGapPx = 10.0;          // largest root gap that counts as closed where gaps are not allowed; >= 0
  double minWidthPx = 50.0;              // least distance of the shoulders; >= 0
  TAngleRange leftFlankDeg{0.0, 45.0};   // degrees
  TAngleRange rightFlankDeg{-45.0, 0.0};      // degrees
  TAngleRange includedAngleDeg{90.0, 178.0};  // looked at where it is another than this
  bool allowsGap = true;                      // false: a root gap above maxClosedGapPx is refused

  // Fills the parameters of the joint; values are not checked.
  TWeldParams params(TWeldPosType pos = TWeldPosType::centre) const;
  // Reads the settings back, whatever the parameters hold.
  static TGrooveSettings of(const TWeldParams& params);
};

// Any stripe: is it still there?
struct ZELWELDDETECT_EXPORT TPresenceSettings {
  bool usesRidges = false;    // extracts the stripe as a ridge instead of edge pairs
  bool searchesNear = false;  // only near the previous stripe (with edge pairs)

  // Fills the parameters of the joint; values are not checked.
  TWeldParams params() const;
  // Reads the settings back, whatever the parameters hold.
  static TPresenceSettings of(const TWeldParams& params);
};

// What values a parameter takes.
enum class TParameterKind : std::int32_t {
  number = 0,  // with a fraction
  count = 1,   // a whole one
  flag = 2     // 0 or 1
};

// Smallest and largest value, in the unit of the parameter.
struct TParameterLimits {
  double min = 0.0;            // in that unit
  double max = 0.0;            // in that unit
  bool isMinExcluded = false;  // only values above min
};

// How a value is read and written.
struct TParameterValue {
  TParameterKind kind = TParameterKind::number;              // what values there are
  double (*get)(const TWeldParams& params) = nullptr;        // reads it, in the unit of the parameter
  void (*set)(TWeldParams& params, double value) = nullptr;  // a count takes the whole part, a flag value != 0
};

// One setting of a joint. A range of angles is two of them, "leftFlankDeg.min" and "leftFlankDeg.max".
struct TWeldParameter {
  const char* name = "";     // "minGapPx"
  const char* field = "";    // of TWeldParams: "dPara8"
  const char* unit = "";     // "px", "deg", "grey", "points", "columns"; empty for ratios and flags
  TParameterLimits limits;   // of its value
  const char* meaning = "";  // in a few words
  const char* tooLow = "";   // what a value that is too low does; of a flag, what false does
  const char* tooHigh = "";  // the same for one that is too high, and for true
  TParameterValue value;     // how to read and write it
};

// One kind of joint.
struct TWeldJoint {
  TWeldType type = TWeldType::none;        // as in TWeldParams
  const char* name = "";                   // "buttGap"
  const char* shortName = "";              // "gap"; the name itself where there is no shorter one
  const char* meaning = "";                // how the stripe shows it
  std::vector<TWeldPosType> positions;     // that it knows; any other one counts as centre
  std::vector<TFeature> features;          // that it has
  std::vector<TWeldParameter> parameters;  // that it reads
};

// All joints, in the order of their types.
ZELWELDDETECT_EXPORT const std::vector<TWeldJoint>& weldJoints();

// The joint of that type; null for a type without a row.
ZELWELDDETECT_EXPORT const TWeldJoint* findWeldJoint(TWeldType type);

// The joint of that name, short name or number; case, '-' and '_' do not matter. Null for any other text.
ZELWELDDETECT_EXPORT const TWeldJoint* findWeldJoint(const std::string& name);

// The parameter of that name or field ("minGapPx", "dPara8"); null when the joint does not read it.
ZELWELDDETECT_EXPORT const TWeldParameter* findWeldParameter(const TWeldJoint& joint, const std::string& name);

// Sets the position, by name or number, or one parameter, by name or field and with the value as it is typed:
// "12", "true". Returns what is wrong with it and what would be right; empty: it is set.
ZELWELDDETECT_EXPORT std::string setWeldPosition(TWeldParams& params, const std::string& name);
ZELWELDDETECT_EXPORT std::string setWeldParameter(TWeldParams& params, const std::string& name,
                                                  const std::string& value);

// "minGapPx (dPara8)"; "0 to 1", "above 0, up to 1000", "true or false".
ZELWELDDETECT_EXPORT std::string weldParameterLabel(const TWeldParameter& parameter);
ZELWELDDETECT_EXPORT std::string weldParameterRange(const TWeldParameter& parameter);

// "centre", "left", ...; "unknown" for other values.
ZELWELDDETECT_EXPORT const char* weldPosText(TWeldPosType pos);

// "left shoulder"; "unknown" for other values.
ZELWELDDETECT_EXPORT const char* featureText(TFeature feature);
