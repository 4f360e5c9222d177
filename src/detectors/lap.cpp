#include "detectors/lap.h"

#include "detectors/piece_end.h"
#include "detectors/stripe_front_end.h"
#include "geometry/groove.h"
#include "geometry/piece_fit.h"
#include "geometry/segmentation.h"
#include "support/arc_tangent.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace weld {

namespace {

constexpr int kTouchingPx = 10;    // facing ends of touching pieces are nearer
constexpr int kCollinearDeg = 10;  // and their whole degrees differ by less
constexpr int kMaxMergePasses = 101;
constexpr std::size_t kMinStripePoints = 10;
constexpr float kMaxOverlapPx = 30.0F;  // exclusive
constexpr float kMinTotalLengthPx = 300.0F;
constexpr std::size_t kMinPieces = 2;

constexpr TCheck kEnoughPieces = countCheck(TWeldOutcome::tooFewPieces, "straight pieces", TRule::atLeast);
constexpr TCheck kLeftFit{TWeldOutcome::pieceNotFitted, "line through the left piece"};
constexpr TCheck kRightFit{TWeldOutcome::pieceNotFitted, "line through the right piece"};
constexpr TCheck kStripePoints = countCheck(TWeldOutcome::tooFewCentres, "stripe points", TRule::atLeast);
constexpr TCheck kLeftSupport{TWeldOutcome::endWithoutSupport, "stripe near the end of the left piece"};
constexpr TCheck kRightSupport{TWeldOutcome::endWithoutSupport, "stripe near the end of the right piece"};
constexpr TCheck kStep{TWeldOutcome::stepTooLow, "step", TRule::above, "px", "dPara7"};
constexpr TCheck kOverlap{TWeldOutcome::overlapTooLarge, "overlap", TRule::below, "px"};
constexpr TCheck kLength{TWeldOutcome::pieceTooShort, "length of the shorter piece", TRule::above, "px", "dPara6"};
constexpr TCheck kTotalLength{TWeldOutcome::piecesTooShort, "length of both pieces", TRule::above, "px"};

bool areTouchingCollinear(const TStripePiece& first, const TStripePiece& second) {
  const double angleDeg =
      std::abs(arcTangent(static_cast<double>(first.k)) - arcTangent(static_cast<double>(second.k))) * kDegPerRad;
  return std::abs(first.endPt.x - second.startPt.x) < kTouchingPx &&
         std::abs(first.endPt.y - second.startPt.y) < kTouchingPx && truncToInt(angleDeg) < kCollinearDeg;
}

void joinTouchingPieces(std::vector<TStripePiece>& pieces, TScratch* scratch) {
  for (int pass = 0; pass < kMaxMergePasses && pieces.size() >= 3; ++pass) {
    const auto pair = std::adjacent_find(pieces.begin(), pieces.end(), areTouchingCollinear);
    if (pair == pieces.end()) return;
    const std::size_t index = static_cast<std::size_t>(pair - pieces.begin());
    TLent<TStripePiece> joined =
        fitPiece(joinPoints(pair->pts, std::next(pair)->pts, scratch), kPieceFitTolPx, scratch);
    std::swap(*pair, static_cast<TStripePiece&>(joined));
    removePiece(pieces, index + 1, scratch);
  }
}

// Deliberate: the order of equal counts is that of these exchanges.
void sortByInliers(std::vector<TStripePiece>& pieces) {
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

std::optional<TLapCorners> findCorners(const TStripePiece& left, const TStripePiece& right,
                                       const std::vector<cv::Point2f>& stripePts, const cv::Mat& image,
                                       const TWeldParams& params, const TTrace& trace, TScratch* scratch) {
  TPieceEnd leftEnd{"left end", left.endPt, left.endPt.y, lastPoints(left.pts, scratch)};
  const std::optional<cv::Point2f> leftCorner =
      refinePieceEnd(left, std::move(leftEnd), stripePts, image, params, trace, scratch);
  if (!leftCorner) return std::nullopt;
  // Deliberate: the right piece, too, is judged by the row where it ends, not by where it starts.
  TPieceEnd rightEnd{"right end", right.startPt, right.endPt.y, firstPoints(right.pts, scratch)};
  const std::optional<cv::Point2f> rightCorner =
      refinePieceEnd(right, std::move(rightEnd), stripePts, image, params, trace, scratch);
  if (!rightCorner) return std::nullopt;
  // Deliberate: of the two markers only the left column and the right row are looked at.
  if (!trace.holds(kLeftSupport, leftCorner->x != kNoGroovePos.x)) return std::nullopt;
  if (!trace.holds(kRightSupport, rightCorner->y != kNoGroovePos.y)) return std::nullopt;
  return TLapCorners{*leftCorner, *rightCorner};
}

bool isLap(const TLapCorners& corners, const TStripePiece& left, const TStripePiece& right,
           const TWeldParams& params, const TTrace& trace) {
  const auto minStepPx = static_cast<float>(params.dPara7);
  const auto minLengthPx = static_cast<float>(params.dPara6);
  const auto leftLength = static_cast<float>(pieceLength(left));
  const auto rightLength = static_cast<float>(pieceLength(right));
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

std::optional<TLapPieces> selectLapLinePair(std::vector<TStripePiece> allPieces, const TTrace& trace,
                                            TScratch* scratch) {
  TLentList<TStripePiece> pieces(scratch, std::move(allPieces));
  joinTouchingPieces(pieces, scratch);
  if (!trace.passes(kEnoughPieces, pieces.size(), kMinPieces)) return std::nullopt;
  if (pieces.size() > 2) sortByInliers(pieces);
  TLent<TStripePiece> first(scratch, std::move(pieces[0]));
  TLent<TStripePiece> second(scratch, std::move(pieces[1]));
  return TLapPieces{std::move(first), std::move(second)};
}

TWeldLineRes computeLapSeam(const TStripePiece& left, const TStripePiece& right,
                            const std::vector<cv::Point2f>& stripePts, const cv::Mat& image,
                            const TWeldParams& params, const TTrace& trace, TScratch* scratch) {
  if (!trace.holds(kLeftFit, left.isFitted) || !trace.holds(kRightFit, right.isFitted)) return {};
  if (!trace.passes(kStripePoints, stripePts.size(), kMinStripePoints)) return {};
  const std::optional<TLapCorners> corners = findCorners(left, right, stripePts, image, params, trace, scratch);
  if (!corners) return {};
  const cv::Point2f seam = seamPoint(*corners, params.weldPosType);
  trace.addTestedPoint(seam);
  if (!isLap(*corners, left, right, params, trace)) return {};
  TWeldLineRes result;
  result.isFound = true;
  result.weldPos = seam;
  TScratch::take(scratch, result.stripePts, stripePts.size());
  result.stripePts = stripePts;
  return result;
}

TWeldLineRes detectLapSeam(TDetectorObject& object, const cv::Mat& image, const TWeldLineRes& prevRes,
                           const cv::Mat& searchMask) {
  const TLentList<cv::Point2f> centres = extractStripe(object, image, prevRes, searchMask);
  const TTrace& trace = object.trace;
  TScratch* const scratch = &object.scratch;
  const TStageTimer timer(trace, "seam");
  auto pair = selectLapLinePair(segmentStripe(centres, kPlateMergeLimits, kPolygonEpsilonPx, trace, scratch),
                                trace, scratch);
  if (!pair) return {};
  auto& [left, right] = *pair;
  if (left.startPt.x > right.startPt.x) std::swap(left, right);
  return computeLapSeam(left, right, centres, image, object.getWeldParameters(), trace, scratch);
}

}  // namespace weld
