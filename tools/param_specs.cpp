// The rows of the parameter table.
#include "tools/param_table.h"

namespace tool {
namespace {

constexpr TParamLimits kShare{0.0, 1.0};
constexpr TParamLimits kSwitch{0.0, 1.0};
constexpr TParamLimits kGreyLevels{0.0, 255.0};
constexpr TParamLimits kTolerancePx{0.0, 1000.0, true};
constexpr TParamLimits kLengthPx{0.0, 100000.0};
constexpr TParamLimits kWidthPx{1.0, 100000.0};
constexpr TParamLimits kCount{0.0, 100000.0};
constexpr TParamLimits kCountFrom1{1.0, 100000.0};
constexpr TParamLimits kSlopeDeg{-90.0, 90.0};
constexpr TParamLimits kIncludedDeg{0.0, 180.0};

const std::vector<TParamSpec>& buttGapParams() {
  static const std::vector<TParamSpec> specs = {
      {"dPara2", &TWeldParams::dPara2, "px", kTolerancePx,
       "stripe points nearer than this to the fitted line take part in the gap search",
       "points of a rough or bent stripe drop out, and the holes they leave are taken for the gap",
       "spatter and backing inside the gap count as stripe and narrow or hide it"},
      {"dPara3", &TWeldParams::dPara3, "", kShare,
       "first detection: smallest share of the stripe points on the line",
       "a line through clutter is accepted as the stripe",
       "a first detection fails where clutter, flare or a bend hold some of the points"},
      {"dPara4", &TWeldParams::dPara4, "px", kTolerancePx, "tracking: scale of the robust line fit",
       "a rough stripe gives no line, and the frame is lost",
       "flare, bends and clutter beside the stripe pull the line away"},
      {"dPara8", &TWeldParams::dPara8, "px", kWidthPx, "smallest gap width (N missing columns measure N + 1)",
       "columns that the stripe loses to spatter or dirt are reported as a gap", "narrow gaps are not found"},
      {"angleRange4.min", TRangeBound{&TWeldParams::angleRange4, &TAngleRange::min}, "deg", kSlopeDeg,
       "first detection: smallest angle of the stripe", "clutter that rises to the right passes for the stripe",
       "a stripe that rises to the right is not found"},
      {"angleRange4.max", TRangeBound{&TWeldParams::angleRange4, &TAngleRange::max}, "deg", kSlopeDeg,
       "first detection: largest angle of the stripe", "a stripe that falls to the right is not found",
       "clutter that falls to the right passes for the stripe"},
  };
  return specs;
}

// Lap and plate find the corner at the end of a piece alike.
TParamSpec brightnessDrop() {
  return {"dPara1",
          &TWeldParams::dPara1,
          "grey",
          kGreyLevels,
          "brightness drop along a piece that must be exceeded to move its end",
          "a dark speckle near the end of a piece that fades out moves the corner",
          "the corner stays at the last stripe point, a pixel or two off the edge"};
}

const std::vector<TParamSpec>& lapParams() {
  static const std::vector<TParamSpec> specs = {
      brightnessDrop(),
      {"dPara2", &TWeldParams::dPara2, "px", kTolerancePx, "stripe points nearer than this to a piece support it",
       "fewer than 10 points support a rough piece, and the frame is lost",
       "points of the other piece count once it exceeds the step, and the corner is placed far off"},
      {"dPara6", &TWeldParams::dPara6, "px", kLengthPx, "length that both pieces must exceed",
       "a short piece of clutter passes for one side of the step",
       "a side of which the image shows little is not found"},
      {"dPara7", &TWeldParams::dPara7, "px", kLengthPx, "height that the step must exceed",
       "a bend of one plate is reported as a step", "low steps are not found"},
  };
  return specs;
}

const std::vector<TParamSpec>& cornerParams() {
  static const std::vector<TParamSpec> specs = {
      {"dPara2", &TWeldParams::dPara2, "px", kTolerancePx,
       "stripe points nearer than this to a flank belong to it",
       "rough flanks lose their points: the corner jitters or is lost",
       "points of the other flank, flare and clutter tilt the flank"},
      {"dPara3", &TWeldParams::dPara3, "", kShare,
       "smallest share of points on a flank; points per column that the better flank must exceed",
       "a few stray points make a flank",
       "flanks are refused in frames with clutter or lost columns; a coarser search takes over, or the frame is "
       "lost"},
      {"dPara4", &TWeldParams::dPara4, "px", kTolerancePx, "scale of the robust line fit",
       "rough flanks give no line, and the frame is lost", "flare and clutter pull the flank away"},
      {"dPara6", &TWeldParams::dPara6, "points", kLengthPx, "stripe points that the better flank must exceed",
       "a few points in a corner of the image make a seam", "short flanks are not found"},
      {"nPara1", &TWeldParams::nPara1, "columns", kCountFrom1,
       "columns without stripe around the corner must stay below this",
       "a single lost column at the corner refuses it", "a corner is placed in a hole of the stripe"},
      {"angleRange1Min", &TWeldParams::angleRange1Min, "deg", kSlopeDeg, "left flank: angle must exceed this",
       "a line that rises to the right passes for the left flank", "flat left flanks are not found"},
      {"angleRange1Max", &TWeldParams::angleRange1Max, "deg", kSlopeDeg, "left flank: angle must stay below this",
       "steep left flanks are not found", "steep clutter passes for the left flank"},
      {"angleRange2Min", &TWeldParams::angleRange2Min, "deg", kSlopeDeg, "right flank: angle must exceed this",
       "steep clutter passes for the right flank", "steep right flanks are not found"},
      {"angleRange2Max", &TWeldParams::angleRange2Max, "deg", kSlopeDeg, "right flank: angle must stay below this",
       "flat right flanks are not found", "a line that falls to the right passes for the right flank"},
      {"angleRange5Min", &TWeldParams::angleRange5Min, "deg", kIncludedDeg,
       "angle between the flanks must exceed this", "two lines through clutter pass for a sharp corner",
       "sharp corners are not found"},
      {"angleRange5Max", &TWeldParams::angleRange5Max, "deg", kIncludedDeg,
       "angle between the flanks must stay below this", "flat corners are not found",
       "a slightly bent stripe passes for a corner"},
      {"dPara10", &TWeldParams::dPara10, "", kShare,
       "share of each flank, counted from the corner, that must be unbroken",
       "breaks in the flanks beside the corner are overlooked", "a break far from the corner refuses it"},
      {"nPara5", &TWeldParams::nPara5, "columns", kCount, "longest break accepted there",
       "a few columns that the stripe loses refuse the corner",
       "a corner is accepted although much of its flanks is missing"},
      {"haveGap", &TWeldParams::haveGap, "", kSwitch,
       "true accepts a gap at the corner, false demands stripe on both sides of it",
       "a joint that is open or dark at its root is refused",
       "a corner beyond the ends of both flanks is accepted, though nothing there confirms it"},
  };
  return specs;
}

const std::vector<TParamSpec>& plateParams() {
  static const std::vector<TParamSpec> specs = {
      brightnessDrop(),
      {"dPara2", &TWeldParams::dPara2, "px", kTolerancePx,
       "stripe points nearer than this to the piece support it",
       "fewer than 10 points support a rough piece, and the seam is reported far off or lost",
       "flare and clutter at the end of the piece move the end"},
      {"dPara6", &TWeldParams::dPara6, "px", kLengthPx, "length that the piece must exceed",
       "a short piece of clutter above the plate is taken for it",
       "a plate that the stripe shows in parts is not found"},
      {"angleRange0Min", &TWeldParams::angleRange0Min, "deg", kSlopeDeg, "angle of the piece must exceed this",
       "clutter that rises to the right is taken for the plate", "a plate that rises to the right is not found"},
      {"angleRange0Max", &TWeldParams::angleRange0Max, "deg", kSlopeDeg, "angle of the piece must stay below this",
       "a plate that falls to the right is not found", "clutter that falls to the right is taken for the plate"},
      {"dPara9", &TWeldParams::dPara9, "px", kLengthPx, "smallest distance between the two ends",
       "a part of the plate is reported as the whole", "narrow plates are not found"},
  };
  return specs;
}

const std::vector<TParamSpec>& stripePresenceParams() {
  static const std::vector<TParamSpec> specs = {
      {"flagPara1", &TWeldParams::flagPara1, "", kSwitch,
       "true extracts the stripe as a ridge instead of edge pairs",
       "fast; very thin, soft and dim stripes are not seen",
       "slower; such stripes are seen, and faint ghosts too"},
      {"flagPara2", &TWeldParams::flagPara2, "", kSwitch,
       "true searches only near the previous stripe (with edge pairs)",
       "every frame searches the whole image: slower, and a longer reflection is taken for the stripe",
       "a stripe that leaves the band around the previous one is missed for a frame"},
  };
  return specs;
}

}  // namespace

const std::vector<TParamSpec>& paramsOf(TWeldType type) {
  static const std::vector<TParamSpec> nothing;
  switch (type) {
    case TWeldType::buttGap:
      return buttGapParams();
    case TWeldType::lap:
      return lapParams();
    case TWeldType::corner:
      return cornerParams();
    case TWeldType::plate:
      return plateParams();
    case TWeldType::stripePresence:
      return stripePresenceParams();
    default:
      return nothing;
  }
}

}  // namespace tool
