#include "detectors/plate.h"

#include "detectors/common_checks.h"
#include "detectors/piece_end.h"
#include "geometry/piece_fit.h"
#include "geometry/segmentation.h"
#include "support/arc_tangent.h"
#include "support/line_math.h"
#include "support/zel_functions.h"
#include "zelWeldSettings.h"

#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace weld {

namespace {

constexpr std::size_t kMinPiecePoints = 10;
constexpr double kOnMarkerPx = 1e-3;   // single precision of the ends moves the line by less
constexpr int kLowestRow = 9999;       // a piece must lie above this row
constexpr int kFramesPerMessage = 20;  // the message is shown after more successful frames than this
// Seam width in pixels and line slope in degrees, in the GBK code page.
constexpr char kPlateInfoFormat[] =
    "\xBA\xB8\xB7\xEC\xBF\xED\xA3\xBA"
    "%.2f"
    "\xCF\xF1\xCB\xD8\xA3\xAC\xD6\xB1\xCF\xDF\xD0\xB1\xC2\xCA\xA3\xBA"
    "%.2f"
    "\xA1\xE3";

constexpr TCheck kAngleAbove{{20, TWeldOutcome::angleOutOfRange, "piece", "angle of the piece too small"},
                             "angle of the piece",
                             TRule::above,
                             "deg",
                             "plateAngleDeg.min"};
constexpr TCheck kAngleBelow{{21, TWeldOutcome::angleOutOfRange, "piece", "angle of the piece too large"},
                             "angle of the piece",
                             TRule::below,
                             "deg",
                             "plateAngleDeg.max"};
constexpr TCheck kLength{{22, TWeldOutcome::elementTooShort, "piece", "piece too short"},
                         "length of the piece",
                         TRule::above,
                         "px",
                         "minPiecePx"};
constexpr TCheck kRow{{23, TWeldOutcome::seamOutside, "piece", "piece too low in the image"},
                      "row of the piece",
                      TRule::below,
                      "px"};
constexpr TCheck kFit{{24, TWeldOutcome::fitTooWeak, "piece", "no line through a piece of the stripe"},
                      "line through the piece"};
constexpr TCheck kFitPoints =
    countCheck({24, TWeldOutcome::fitTooWeak, "piece", "no line through a piece of the stripe"},
               "points on the line of the piece", TRule::atLeast);
constexpr TCheck kWidth{{28, TWeldOutcome::sizeOutOfRange, "plate", "plate too narrow"},
                        "plate width",
                        TRule::notBelow,
                        "px",
                        "minWidthPx"};

struct TPlateEnds {
  cv::Point2f start;
  cv::Point2f end;
};

bool isPlateCandidate(const TPiece& piece, const TPlateSettings& settings, const TTrace& trace) {
  const double angleDeg = pieceAngleDeg(piece);
  return trace.passes(kAngleAbove, angleDeg, settings.plateAngleDeg.min) &&
         trace.passes(kAngleBelow, angleDeg, settings.plateAngleDeg.max) &&
         trace.passes(kLength, pieceLength(piece), settings.minPiecePx);
}

// The highest piece in the image, the first of equally high ones.
const TPiece* selectPlateLine(const TPieces& pieces, const TPlateSettings& settings, const TTrace& trace) {
  const TPiece* highest = nullptr;
  int highestRow = 0;
  trace.passes(kEnoughPieces, pieces.size(), std::size_t{1});
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    const TTrace pieceTrace = trace.ofPiece(i);
    if (!isPlateCandidate(pieces[i], settings, pieceTrace)) continue;
    const int row = roundToInt((static_cast<double>(pieces[i].startPt.y) + pieces[i].endPt.y) * 0.5);
    if (!pieceTrace.passes(kRow, row, kLowestRow)) continue;
    if (highest != nullptr && row >= highestRow) continue;
    highest = &pieces[i];
    highestRow = row;
  }
  return highest;
}

std::optional<TPlateEnds> findEnds(const TFrame& frame, const TPiece& piece, const TPlateSettings& settings) {
  const TGrooveRule rule{settings.supportPx, settings.minEdgeDrop};
  const TPieceEnd end{"right end", piece.endPt, piece.endPt.y, lastPoints(piece.fitPts)};
  const std::optional<cv::Point2f> endCorner = refinePieceEnd(frame, piece, end, piece.pts, rule);
  if (!endCorner) return std::nullopt;
  const TPieceEnd start{"left end", piece.startPt, piece.startPt.y, firstPoints(piece.fitPts)};
  const std::optional<cv::Point2f> startCorner = refinePieceEnd(frame, piece, start, piece.pts, rule);
  if (!startCorner) return std::nullopt;
  return TPlateEnds{*startCorner, *endCorner};
}

double widthOf(const TPlateEnds& ends) {
  const cv::Point2f d = ends.start - ends.end;
  return std::sqrt(d.ddot(d));
}

cv::Point2f seamPoint(const TPlateEnds& ends, TWeldPosType pos) {
  const float y = (ends.start.y + ends.end.y) * 0.5F;
  switch (pos) {
    case TWeldPosType::left:
      return {ends.start.x, y};
    case TWeldPosType::right:
      return {ends.end.x, y};
    default:
      return {(ends.end.x + ends.start.x) * 0.5F, y};
  }
}

void storeEndLine(const TPlateEnds& ends, TSeam& result) {
  const cv::Point2f d = ends.start - ends.end;
  const auto dx = static_cast<float>(guardDivisor(static_cast<double>(d.x)));
  const auto k = static_cast<double>(d.y / dx);
  const double b = static_cast<double>(ends.start.y) - static_cast<double>(ends.start.x) * k;
  result.auxVal1 = result.auxVal3 = k;
  result.auxVal2 = result.auxVal4 = b;
}

}  // namespace

// Deliberate: the markers (-1, -1) of the corner refinement are not looked at here.
TSeam computePlateSeam(const TFrame& frame, const TPiece& piece) {
  const TPlateSettings settings = TPlateSettings::of(frame.params);
  const TTrace& trace = frame.trace;
  TSeam seam(frame.memory);
  if (!trace.holds(kFit, piece.isFitted)) return seam;
  if (!trace.passes(kFitPoints, piece.fitPts.size(), kMinPiecePoints)) return seam;
  const std::optional<TPlateEnds> ends = findEnds(frame, piece, settings);
  if (!ends) return seam;
  const cv::Point2f pos = seamPoint(*ends, frame.params.weldPosType);
  trace.addTestedPoint(pos);
  if (!trace.passes(kWidth, widthOf(*ends), settings.minWidthPx)) return seam;
  seam.isFound = true;
  seam.pos = pos;
  seam.stripePts.assign(piece.fitPts.begin(), piece.fitPts.end());
  storeEndLine(*ends, seam);
  return seam;
}

TSeam findPlate(const TFrame& frame, const TStripe& stripe, const TPrevious& /*previous*/) {
  const TStageTimer timer(frame.trace, "seam");
  const TPieces pieces = segmentStripe(frame, stripe.points, kPlateMergeLimits);
  const TPiece* const plate = selectPlateLine(pieces, TPlateSettings::of(frame.params), frame.trace);
  return plate != nullptr ? computePlateSeam(frame, *plate) : TSeam(frame.memory);
}

// The line runs through both ends, so that it shows a marker that the mean of the ends hides.
bool havePlateEndsSupport(const TSeam& plate) {
  const double offMarkerPx =
      plate.auxVal1 * static_cast<double>(kNoGroovePos.x) + plate.auxVal2 - static_cast<double>(kNoGroovePos.y);
  return !(std::abs(offMarkerPx) < kOnMarkerPx);
}

void showPlateInfo(int& frames, const TSeam& plate, double stripeWidthPx) {
  static const std::string infoSwitch = "NeedPrintPlateWeldInfo";  // too long to be made without heap memory
  if (!plate.isFound || !zel::APPgetParamBool(infoSwitch)) return;
  const bool isDue = frames + 1 > kFramesPerMessage;
  if (isDue) {
    const auto slopeDeg = static_cast<double>(static_cast<float>(slopeToDeg(-plate.auxVal1)));
    zel::APPshowMessage(cv::format(kPlateInfoFormat, stripeWidthPx, slopeDeg), zel::G_appshowMsg_defaultColor);
  }
  frames = isDue ? 0 : frames + 1;
}

}  // namespace weld
