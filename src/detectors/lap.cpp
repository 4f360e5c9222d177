#include "detectors/lap.h"

#include "detectors/common_checks.h"
#include "detectors/piece_end.h"
#include "geometry/line_fitting.h"
#include "geometry/piece_fit.h"
#include "geometry/segmentation.h"
#include "support/arc_tangent.h"
#include "support/line_math.h"
#include "zelWeldSettings.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace weld {

namespace {

constexpr int kTouchingPx = 10;    // facing ends of touching pieces are nearer
constexpr int kCollinearDeg = 10;  // and their whole degrees differ by less
constexpr int kMaxMergePasses = 101;
constexpr float kMaxOverlapPx = 30.0F;  // exclusive
constexpr float kMinTotalLengthPx = 300.0F;
constexpr std::size_t kMinPieces = 2;

constexpr TCheck kLeftFit{{22, TWeldOutcome::fitTooWeak, "piece", "no line through a piece of the stripe"},
                          "line through the left piece"};
constexpr TCheck kRightFit{{22, TWeldOutcome::fitTooWeak, "piece", "no line through a piece of the stripe"},
                           "line through the right piece"};
constexpr TCheck kLeftSupport{
    {26, TWeldOutcome::fitTooWeak, "end of a piece", "too little stripe near the end of a piece"},
    "stripe near the end of the left piece"};
constexpr TCheck kRightSupport{
    {26, TWeldOutcome::fitTooWeak, "end of a piece", "too little stripe near the end of a piece"},
    "stripe near the end of the right piece"};
constexpr TCheck kStep{
    {26, TWeldOutcome::sizeOutOfRange, "step", "step too low"}, "step", TRule::above, "px", "minStepPx"};
constexpr TCheck kOverlap{
    {27, TWeldOutcome::sizeOutOfRange, "overlap", "pieces overlap too far"}, "overlap", TRule::below, "px"};
constexpr TCheck kLength{{28, TWeldOutcome::elementTooShort, "piece", "piece too short"},
                         "length of the shorter piece",
                         TRule::above,
                         "px",
                         "minPiecePx"};
constexpr TCheck kTotalLength{{29, TWeldOutcome::elementTooShort, "pieces", "pieces too short together"},
                              "length of both pieces",
                              TRule::above,
                              "px"};

bool areTouchingCollinear(const TPiece& first, const TPiece& second) {
  const double angleDeg =
      std::abs(arcTangent(static_cast<double>(first.k)) - arcTangent(static_cast<double>(second.k))) * kDegPerRad;
  return std::abs(first.endPt.x - second.startPt.x) < kTouchingPx &&
         std::abs(first.endPt.y - second.startPt.y) < kTouchingPx && truncToInt(angleDeg) < kCollinearDeg;
}

void joinTouchingPieces(TPieces& pieces, TMemory* memory) {
  for (int pass = 0; pass < kMaxMergePasses && pieces.size() >= 3; ++pass) {
    const auto pair = std::adjacent_find(pieces.begin(), pieces.end(), areTouchingCollinear);
    if (pair == pieces.end()) return;
    *pair = fitPiece(joinPoints(pair->pts, std::next(pair)->pts, memory), kPieceFitTolPx, memory);
    pieces.erase(std::next(pair));
  }
}

// Deliberate: the order of equal counts is that of these exchanges.
void sortByInliers(TPieces& pieces) {
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    for (std::size_t j = i + 1; j < pieces.size(); ++j) {
      if (pieces[i].fitPts.size() < pieces[j].fitPts.size()) std::swap(pieces[i], pieces[j]);
    }
  }
}

struct TLapCorners {
  cv::Point2f left;
  cv::Point2f right;
};

// A left and a right piece, and what their corners are found with.
struct TLapCase {
  const TFrame& frame;
  const TPiece& left;
  const TPiece& right;
  TPointView stripePts;
  TLapSettings settings;
};

std::optional<TLapCorners> findCorners(const TLapCase& c) {
  const TTrace& trace = c.frame.trace;
  const TGrooveRule rule{c.settings.supportPx, c.settings.minEdgeDrop};
  const TPieceEnd leftEnd{"left end", c.left.endPt, c.left.endPt.y, lastPoints(c.left.pts)};
  const std::optional<cv::Point2f> leftCorner = refinePieceEnd(c.frame, c.left, leftEnd, c.stripePts, rule);
  if (!leftCorner) return std::nullopt;
  // Deliberate: the right piece, too, is judged by the row where it ends, not by where it starts.
  const TPieceEnd rightEnd{"right end", c.right.startPt, c.right.endPt.y, firstPoints(c.right.pts)};
  const std::optional<cv::Point2f> rightCorner = refinePieceEnd(c.frame, c.right, rightEnd, c.stripePts, rule);
  if (!rightCorner) return std::nullopt;
  // Deliberate: of the two markers only the left column and the right row are looked at.
  if (!trace.holds(kLeftSupport, leftCorner->x != kNoGroovePos.x)) return std::nullopt;
  if (!trace.holds(kRightSupport, rightCorner->y != kNoGroovePos.y)) return std::nullopt;
  return TLapCorners{*leftCorner, *rightCorner};
}

bool isLap(const TLapCase& c, const TLapCorners& corners) {
  const TTrace& trace = c.frame.trace;
  const auto minStepPx = static_cast<float>(c.settings.minStepPx);
  const auto minLengthPx = static_cast<float>(c.settings.minPiecePx);
  const auto leftLength = static_cast<float>(pieceLength(c.left));
  const auto rightLength = static_cast<float>(pieceLength(c.right));
  return trace.passes(kStep, std::abs(corners.right.y - corners.left.y), minStepPx) &&
         trace.passes(kOverlap, corners.left.x - corners.right.x, kMaxOverlapPx) &&
         trace.passes(kLength, std::min(leftLength, rightLength), minLengthPx) &&
         trace.passes(kTotalLength, leftLength + rightLength, kMinTotalLengthPx);
}

// On a tie the right corner is the upper and the lower one.
cv::Point2f seamPoint(const TLapCorners& corners, TWeldPosType pos) {
  switch (pos) {
    case TWeldPosType::upper:
      return corners.right.y > corners.left.y ? corners.left : corners.right;
    case TWeldPosType::lower:
      return corners.left.y > corners.right.y ? corners.left : corners.right;
    default:
      return (corners.left + corners.right) * 0.5F;
  }
}

}  // namespace

std::optional<std::pair<TPiece, TPiece>> selectLapPieces(const TFrame& frame, TPieces pieces) {
  joinTouchingPieces(pieces, frame.memory);
  if (!frame.trace.passes(kEnoughPieces, pieces.size(), kMinPieces)) return std::nullopt;
  if (pieces.size() > 2) sortByInliers(pieces);
  return std::pair(std::move(pieces[0]), std::move(pieces[1]));
}

TSeam computeLapSeam(const TFrame& frame, const TPiece& left, const TPiece& right, TPointView stripePts) {
  const TLapCase lap{frame, left, right, stripePts, TLapSettings::of(frame.params)};
  const TTrace& trace = frame.trace;
  TSeam seam(frame.memory);
  if (!trace.holds(kLeftFit, left.isFitted) || !trace.holds(kRightFit, right.isFitted)) return seam;
  if (!trace.passes(kStripePoints, stripePts.size(), kMinFitPoints)) return seam;
  const std::optional<TLapCorners> corners = findCorners(lap);
  if (!corners) return seam;
  const cv::Point2f pos = seamPoint(*corners, frame.params.weldPosType);
  trace.addTestedPoint(pos);
  if (!isLap(lap, *corners)) return seam;
  seam.isFound = true;
  seam.pos = pos;
  seam.stripePts.assign(stripePts.begin(), stripePts.end());
  return seam;
}

TSeam findLapBetween(const TFrame& frame, const TStripe& stripe, std::optional<TLapPieces>& pieces) {
  const TStageTimer timer(frame.trace, "seam");
  auto pair = selectLapPieces(frame, segmentStripe(frame, stripe.points, kPlateMergeLimits));
  if (!pair) return TSeam(frame.memory);
  auto& [left, right] = *pair;
  if (left.startPt.x > right.startPt.x) std::swap(left, right);
  TSeam seam = computeLapSeam(frame, left, right, stripe.points);
  pieces = TLapPieces{std::move(left), std::move(right)};
  return seam;
}

TSeam findLap(const TFrame& frame, const TStripe& stripe, const TPrevious& /*previous*/) {
  std::optional<TLapPieces> pieces;
  return findLapBetween(frame, stripe, pieces);
}

}  // namespace weld
