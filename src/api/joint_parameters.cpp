// The parameters that each joint reads, in the order of TWeldParams.
#include "api/joint_parameters.h"

#include <type_traits>

namespace weld {

namespace {

constexpr TParameterLimits kShare{0.0, 1.0};
constexpr TParameterLimits kFlag{0.0, 1.0};
constexpr TParameterLimits kGreyLevels{0.0, 255.0};
constexpr TParameterLimits kTolerancePx{0.0, 1000.0, true};
constexpr TParameterLimits kLengthPx{0.0, 100000.0};
constexpr TParameterLimits kGapPx{2.0, 100000.0};  // an unbroken stripe measures 1
constexpr TParameterLimits kCount{0.0, 100000.0};
constexpr TParameterLimits kCountFrom1{1.0, 100000.0};
constexpr TParameterLimits kSlopeDeg{-90.0, 90.0};
constexpr TParameterLimits kIncludedDeg{0.0, 180.0};

// The way to a field: one member of TWeldParams, or two where the field is a record.
template <auto kMember>
constexpr auto& at(TWeldParams& params) {
  return params.*kMember;
}
template <auto kMember, auto kPart>
constexpr auto& at(TWeldParams& params) {
  return params.*kMember.*kPart;
}

template <auto... kWay>
double getValue(const TWeldParams& params) {
  return static_cast<double>(at<kWay...>(const_cast<TWeldParams&>(params)));
}

template <auto... kWay>
void setValue(TWeldParams& params, double value) {
  auto& field = at<kWay...>(params);
  using TField = std::remove_reference_t<decltype(field)>;
  if constexpr (std::is_same_v<TField, bool>) {
    field = value != 0.0;
  } else {
    field = static_cast<TField>(value);
  }
}

template <auto... kWay>
constexpr TParameterKind kindOf() {
  using TField = std::remove_reference_t<decltype(at<kWay...>(std::declval<TWeldParams&>()))>;
  if (std::is_same_v<TField, bool>) return TParameterKind::flag;
  return std::is_same_v<TField, double> ? TParameterKind::number : TParameterKind::count;
}

template <auto... kWay>
constexpr TParameterValue kValue{kindOf<kWay...>(), getValue<kWay...>, setValue<kWay...>};

// Lap and plate find the corner at the end of a piece alike.
TWeldParameter minEdgeDrop() {
  return {"minEdgeDrop",
          "dPara1",
          "grey",
          kGreyLevels,
          "brightness drop along a piece that must be exceeded to move its end",
          "a dark speckle near the end of a piece that fades out moves the corner",
          "the corner stays at the last stripe point, a pixel or two off the edge",
          kValue<&TWeldParams::dPara1>};
}

}  // namespace

std::vector<TWeldParameter> gapParameters() {
  return {
      {"lineTolerancePx", "dPara2", "px", kTolerancePx,
       "stripe points nearer than this to the fitted line take part in the gap search",
       "points of a rough or bent stripe drop out, and the holes they leave are taken for the gap",
       "spatter and backing inside the gap count as stripe and narrow or hide it", kValue<&TWeldParams::dPara2>},
      {"minLineShare", "dPara3", "", kShare, "first detection: smallest share of the stripe points on the line",
       "a line through clutter is accepted as the stripe",
       "a first detection fails where clutter, flare or a bend hold some of the points",
       kValue<&TWeldParams::dPara3>},
      {"fitScalePx", "dPara4", "px", kTolerancePx, "tracking: scale of the robust line fit",
       "a rough stripe gives no line, and the frame is lost",
       "flare, bends and clutter beside the stripe pull the line away", kValue<&TWeldParams::dPara4>},
      {"minGapPx", "dPara8", "px", kGapPx, "smallest gap width (N missing columns measure N + 1)",
       "columns that the stripe loses to spatter or dirt are reported as a gap", "narrow gaps are not found",
       kValue<&TWeldParams::dPara8>},
      {"stripeAngleDeg.min", "angleRange4.min", "deg", kSlopeDeg, "first detection: smallest angle of the stripe",
       "clutter that rises to the right passes for the stripe", "a stripe that rises to the right is not found",
       kValue<&TWeldParams::angleRange4, &TAngleRange::min>},
      {"stripeAngleDeg.max", "angleRange4.max", "deg", kSlopeDeg, "first detection: largest angle of the stripe",
       "a stripe that falls to the right is not found", "clutter that falls to the right passes for the stripe",
       kValue<&TWeldParams::angleRange4, &TAngleRange::max>},
  };
}

std::vector<TWeldParameter> lapParameters() {
  return {
      minEdgeDrop(),
      {"supportPx", "dPara2", "px", kTolerancePx, "stripe points nearer than this to a piece support it",
       "fewer than 10 points support a rough piece, and the frame is lost",
       "points of the other piece count once it exceeds the step, and the corner is placed far off",
       kValue<&TWeldParams::dPara2>},
      {"minPiecePx", "dPara6", "px", kLengthPx, "length that both pieces must exceed",
       "a short piece of clutter passes for one side of the step",
       "a side of which the image shows little is not found", kValue<&TWeldParams::dPara6>},
      {"minStepPx", "dPara7", "px", kLengthPx, "height that the step must exceed",
       "a bend of one plate is reported as a step", "low steps are not found", kValue<&TWeldParams::dPara7>},
  };
}

std::vector<TWeldParameter> cornerParameters() {
  return {
      {"flankTolerancePx", "dPara2", "px", kTolerancePx, "stripe points nearer than this to a flank belong to it",
       "rough flanks lose their points: the corner jitters or is lost",
       "points of the other flank, flare and clutter tilt the flank", kValue<&TWeldParams::dPara2>},
      {"minFlankShare", "dPara3", "", kShare,
       "smallest share of points on a flank; points per column that the better flank must exceed",
       "a few stray points make a flank",
       "flanks are refused in frames with clutter or lost columns; a coarser search takes over, or the frame is "
       "lost",
       kValue<&TWeldParams::dPara3>},
      {"fitScalePx", "dPara4", "px", kTolerancePx, "scale of the robust line fit",
       "rough flanks give no line, and the frame is lost", "flare and clutter pull the flank away",
       kValue<&TWeldParams::dPara4>},
      {"minFlankPoints", "dPara6", "points", kLengthPx, "stripe points that the better flank must exceed",
       "a few points in a corner of the image make a seam", "short flanks are not found",
       kValue<&TWeldParams::dPara6>},
      {"maxMissingColumns", "nPara1", "columns", kCountFrom1,
       "columns without stripe around the corner must stay below this",
       "a single lost column at the corner refuses it", "a corner is placed in a hole of the stripe",
       kValue<&TWeldParams::nPara1>},
      {"leftFlankDeg.min", "angleRange1Min", "deg", kSlopeDeg, "left flank: angle must exceed this",
       "a line that rises to the right passes for the left flank", "flat left flanks are not found",
       kValue<&TWeldParams::angleRange1Min>},
      {"leftFlankDeg.max", "angleRange1Max", "deg", kSlopeDeg, "left flank: angle must stay below this",
       "steep left flanks are not found", "steep clutter passes for the left flank",
       kValue<&TWeldParams::angleRange1Max>},
      {"rightFlankDeg.min", "angleRange2Min", "deg", kSlopeDeg, "right flank: angle must exceed this",
       "steep clutter passes for the right flank", "steep right flanks are not found",
       kValue<&TWeldParams::angleRange2Min>},
      {"rightFlankDeg.max", "angleRange2Max", "deg", kSlopeDeg, "right flank: angle must stay below this",
       "flat right flanks are not found", "a line that falls to the right passes for the right flank",
       kValue<&TWeldParams::angleRange2Max>},
      {"includedAngleDeg.min", "angleRange5Min", "deg", kIncludedDeg, "angle between the flanks must exceed this",
       "two lines through clutter pass for a sharp corner", "sharp corners are not found",
       kValue<&TWeldParams::angleRange5Min>},
      {"includedAngleDeg.max", "angleRange5Max", "deg", kIncludedDeg,
       "angle between the flanks must stay below this", "flat corners are not found",
       "a slightly bent stripe passes for a corner", kValue<&TWeldParams::angleRange5Max>},
      {"solidShare", "dPara10", "", kShare, "share of each flank, counted from the corner, that must be unbroken",
       "breaks in the flanks beside the corner are overlooked", "a break far from the corner refuses it",
       kValue<&TWeldParams::dPara10>},
      {"maxBreakColumns", "nPara5", "columns", kCount, "longest break accepted there",
       "a few columns that the stripe loses refuse the corner",
       "a corner is accepted although much of its flanks is missing", kValue<&TWeldParams::nPara5>},
      {"allowsGap", "haveGap", "", kFlag,
       "true accepts a gap at the corner, false demands stripe on both sides of it",
       "a joint that is open or dark at its root is refused",
       "a corner beyond the ends of both flanks is accepted, though nothing there confirms it",
       kValue<&TWeldParams::haveGap>},
  };
}

std::vector<TWeldParameter> plateParameters() {
  return {
      minEdgeDrop(),
      {"supportPx", "dPara2", "px", kTolerancePx, "stripe points nearer than this to the piece support it",
       "fewer than 10 points support a rough piece, and the seam is reported far off or lost",
       "flare and clutter at the end of the piece move the end", kValue<&TWeldParams::dPara2>},
      {"minPiecePx", "dPara6", "px", kLengthPx, "length that the piece must exceed",
       "a short piece of clutter above the plate is taken for it",
       "a plate that the stripe shows in parts is not found", kValue<&TWeldParams::dPara6>},
      {"plateAngleDeg.min", "angleRange0Min", "deg", kSlopeDeg, "angle of the piece must exceed this",
       "clutter that rises to the right is taken for the plate", "a plate that rises to the right is not found",
       kValue<&TWeldParams::angleRange0Min>},
      {"plateAngleDeg.max", "angleRange0Max", "deg", kSlopeDeg, "angle of the piece must stay below this",
       "a plate that falls to the right is not found", "clutter that falls to the right is taken for the plate",
       kValue<&TWeldParams::angleRange0Max>},
      {"minWidthPx", "dPara9", "px", kLengthPx, "smallest distance between the two ends",
       "a part of the plate is reported as the whole", "narrow plates are not found",
       kValue<&TWeldParams::dPara9>},
  };
}

std::vector<TWeldParameter> grooveParameters() {
  return {
      {"lineTolerancePx", "dPara2", "px", kTolerancePx,
       "largest root mean square distance of the stripe from a flank or an arc",
       "rough and bowed flanks are refused", "a flank is laid through clutter or through a bead",
       kValue<&TWeldParams::dPara2>},
      {"minElementPx", "dPara6", "px", kLengthPx, "shortest flank or arc", "a speckle passes for a flank",
       "shallow grooves are not found", kValue<&TWeldParams::dPara6>},
      {"minDepthPx", "dPara7", "px", kLengthPx, "least depth of the root below the shoulders",
       "a dent or a bead's edge is reported as a groove", "shallow grooves are not found",
       kValue<&TWeldParams::dPara7>},
      {"maxClosedGapPx", "dPara8", "px", kLengthPx,
       "largest root gap that counts as closed where allowsGap is false", "a root that is hardly seen is refused",
       "an open root is welded like a closed one", kValue<&TWeldParams::dPara8>},
      {"minWidthPx", "dPara9", "px", kLengthPx, "least distance of the shoulders",
       "a scratch is reported as a groove", "narrow grooves are not found", kValue<&TWeldParams::dPara9>},
      {"leftFlankDeg.min", "angleRange1Min", "deg", kSlopeDeg, "left flank: angle must exceed this",
       "other flanks pass", "the joint's own flank is refused", kValue<&TWeldParams::angleRange1Min>},
      {"leftFlankDeg.max", "angleRange1Max", "deg", kSlopeDeg, "left flank: angle must stay below this",
       "the joint's own flank is refused", "other flanks pass", kValue<&TWeldParams::angleRange1Max>},
      {"rightFlankDeg.min", "angleRange2Min", "deg", kSlopeDeg, "right flank: angle must exceed this",
       "other flanks pass", "the joint's own flank is refused", kValue<&TWeldParams::angleRange2Min>},
      {"rightFlankDeg.max", "angleRange2Max", "deg", kSlopeDeg, "right flank: angle must stay below this",
       "the joint's own flank is refused", "other flanks pass", kValue<&TWeldParams::angleRange2Max>},
      {"includedAngleDeg.min", "angleRange5Min", "deg", kIncludedDeg,
       "angle between the flanks must exceed this, unless both bounds are default",
       "sharper grooves than the joint's pass", "the joint's own angle is refused",
       kValue<&TWeldParams::angleRange5Min>},
      {"includedAngleDeg.max", "angleRange5Max", "deg", kIncludedDeg,
       "angle between the flanks must stay below this, unless both bounds are default",
       "the joint's own angle is refused", "flatter grooves than the joint's pass",
       kValue<&TWeldParams::angleRange5Max>},
      {"allowsGap", "haveGap", "", kFlag, "false refuses a root gap above maxClosedGapPx",
       "open roots are refused", "open roots are followed", kValue<&TWeldParams::haveGap>},
  };
}

std::vector<TWeldParameter> presenceParameters() {
  return {
      {"usesRidges", "flagPara1", "", kFlag, "true extracts the stripe as a ridge instead of edge pairs",
       "fast; very thin, soft and dim stripes are not seen", "slower; such stripes are seen, and faint ghosts too",
       kValue<&TWeldParams::flagPara1>},
      {"searchesNear", "flagPara2", "", kFlag, "true searches only near the previous stripe (with edge pairs)",
       "every frame searches the whole image: slower, and a longer reflection is taken for the stripe",
       "a stripe that leaves the band around the previous one is missed for a frame",
       kValue<&TWeldParams::flagPara2>},
  };
}

}  // namespace weld
