#include "detectors/plate.h"

#include "detectors/piece_end.h"
#include "detectors/stripe_front_end.h"
#include "geometry/piece_fit.h"
#include "geometry/segmentation.h"
#include "support/arc_tangent.h"
#include "support/line_math.h"
#include "support/zel_functions.h"

#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace weld {

namespace {

constexpr int kTrackingBandPx = 40;
constexpr std::size_t kMinPiecePoints = 10;
constexpr int kLowestRow = 9999;       // a piece must lie above this row
constexpr int kFramesPerMessage = 20;  // the message is shown after more successful frames than this
// Seam width in pixels and line slope in degrees, in the GBK code page.
constexpr char kPlateInfoFormat[] =
    "\xBA\xB8\xB7\xEC\xBF\xED\xA3\xBA"
    "%.2f"
    "\xCF\xF1\xCB\xD8\xA3\xAC\xD6\xB1\xCF\xDF\xD0\xB1\xC2\xCA\xA3\xBA"
    "%.2f"
    "\xA1\xE3";

constexpr TCheck kEnoughPieces = countCheck(TWeldOutcome::tooFewPieces, "straight pieces", TRule::atLeast);
constexpr TCheck kAngleAbove{TWeldOutcome::pieceAngleTooSmall, "angle of the piece", TRule::above, "deg",
                             "angleRange0Min"};
constexpr TCheck kAngleBelow{TWeldOutcome::pieceAngleTooLarge, "angle of the piece", TRule::below, "deg",
                             "angleRange0Max"};
constexpr TCheck kLength{TWeldOutcome::pieceTooShort, "length of the piece", TRule::above, "px", "dPara6"};
constexpr TCheck kRow{TWeldOutcome::pieceTooLowInImage, "row of the piece", TRule::below, "px"};
constexpr TCheck kFit{TWeldOutcome::pieceNotFitted, "line through the piece"};
constexpr TCheck kFitPoints =
    countCheck(TWeldOutcome::pieceNotFitted, "points on the line of the piece", TRule::atLeast);
constexpr TCheck kWidth{TWeldOutcome::plateTooNarrow, "plate width", TRule::notBelow, "px", "dPara9"};

struct TPlateEnds {
  cv::Point2f start;
  cv::Point2f end;
};

bool isPlateCandidate(const TStripePiece& piece, const TWeldParams& params, const TTrace& trace) {
  const double angleDeg = pieceAngleDeg(piece);
  return trace.passes(kAngleAbove, angleDeg, params.angleRange0Min) &&
         trace.passes(kAngleBelow, angleDeg, params.angleRange0Max) &&
         trace.passes(kLength, pieceLength(piece), params.dPara6);
}

// The highest piece in the image, the first of equally high ones.
const TStripePiece* selectPlateLine(const std::vector<TStripePiece>& pieces, const TWeldParams& params,
                                    const TTrace& trace) {
  const TStripePiece* highest = nullptr;
  int highestRow = 0;
  trace.passes(kEnoughPieces, pieces.size(), std::size_t{1});
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    const TTrace pieceTrace = trace.ofPiece(i);
    if (!isPlateCandidate(pieces[i], params, pieceTrace)) continue;
    const int row = roundToInt((static_cast<double>(pieces[i].startPt.y) + pieces[i].endPt.y) * 0.5);
    if (!pieceTrace.passes(kRow, row, kLowestRow)) continue;
    if (highest != nullptr && row >= highestRow) continue;
    highest = &pieces[i];
    highestRow = row;
  }
  return highest;
}

std::optional<TPlateEnds> findEnds(const TStripePiece& piece, const cv::Mat& image, const TWeldParams& params,
                                   const TTrace& trace, TScratch* scratch) {
  TPieceEnd end{"right end", piece.endPt, piece.endPt.y, lastPoints(piece.fitPts, scratch)};
  const std::optional<cv::Point2f> endCorner =
      refinePieceEnd(piece, std::move(end), piece.pts, image, params, trace, scratch);
  if (!endCorner) return std::nullopt;
  TPieceEnd start{"left end", piece.startPt, piece.startPt.y, firstPoints(piece.fitPts, scratch)};
  const std::optional<cv::Point2f> startCorner =
      refinePieceEnd(piece, std::move(start), piece.pts, image, params, trace, scratch);
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

void storeEndLine(const TPlateEnds& ends, TWeldLineRes& result) {
  const cv::Point2f d = ends.start - ends.end;
  const auto dx = static_cast<float>(guardDivisor(static_cast<double>(d.x)));
  const auto k = static_cast<double>(d.y / dx);
  const double b = static_cast<double>(ends.start.y) - static_cast<double>(ends.start.x) * k;
  result.auxVal1 = result.auxVal3 = k;
  result.auxVal2 = result.auxVal4 = b;
}

}  // namespace

// Deliberate: the markers (-1, -1) of the corner refinement are not looked at here.
TWeldLineRes computePlateSeam(const TStripePiece& piece, const cv::Mat& image, const TWeldParams& params,
                              const TTrace& trace, TScratch* scratch) {
  const double minWidthPx = params.dPara9;
  if (!trace.holds(kFit, piece.isFitted)) return {};
  if (!trace.passes(kFitPoints, piece.fitPts.size(), kMinPiecePoints)) return {};
  const std::optional<TPlateEnds> ends = findEnds(piece, image, params, trace, scratch);
  if (!ends) return {};
  const cv::Point2f seam = seamPoint(*ends, params.weldPosType);
  trace.addTestedPoint(seam);
  if (!trace.passes(kWidth, widthOf(*ends), minWidthPx)) return {};
  TWeldLineRes result;
  result.isFound = true;
  result.weldPos = seam;
  TScratch::take(scratch, result.stripePts, piece.fitPts.size());
  result.stripePts = piece.fitPts;
  storeEndLine(*ends, result);
  return result;
}

TWeldLineRes detectPlateSeam(TPlateDetector& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                             const cv::Mat& searchMask) {
  const TWeldParams params = object.getWeldParameters();
  const TLentList<cv::Point2f> centres = extractStripe(object, image, prevRes, searchMask, kTrackingBandPx);
  const TTrace& trace = object.trace;
  const TStageTimer timer(trace, "seam");
  TScratch* const scratch = &object.scratch;
  const TLentList<TStripePiece> pieces =
      segmentStripe(centres, kPlateMergeLimits, kPolygonEpsilonPx, trace, scratch);
  const TStripePiece* plate = selectPlateLine(pieces, params, trace);
  return plate != nullptr ? computePlateSeam(*plate, image, params, trace, scratch) : TWeldLineRes{};
}

void showPlateInfo(TPlateDetector& object, const TWeldLineRes& result, double stripeWidthPx) {
  static const std::string infoSwitch = "NeedPrintPlateWeldInfo";  // too long to be made without heap memory
  if (!result.isFound || !zel::APPgetParamBool(infoSwitch)) return;
  const int frames = object.plateInfoFrameCounter + 1;
  const bool isDue = frames > kFramesPerMessage;
  if (isDue) {
    const auto slopeDeg = static_cast<double>(static_cast<float>(slopeToDeg(-result.auxVal1)));
    zel::APPshowMessage(cv::format(kPlateInfoFormat, stripeWidthPx, slopeDeg), zel::G_appshowMsg_defaultColor);
  }
  object.plateInfoFrameCounter = isDue ? 0 : frames;
}

}  // namespace weld
