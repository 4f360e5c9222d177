#include "detectors/corner_flanks.h"

#include "geometry/line_fitting.h"
#include "geometry/piece_fit.h"
#include "geometry/segmentation.h"
#include "support/arc_tangent.h"
#include "support/line_math.h"

#include <algorithm>

namespace weld {

namespace {

constexpr TMergeLimits kMergeLimits{5.0F, 200.0F, 20.0F};
constexpr std::size_t kMinFlankPoints = 10;
constexpr double kTrackingReachDeg = 5.0;
constexpr std::size_t kMinPieces = 2;
constexpr TAngleRange kAnyAngleDeg{-90.0, 90.0};

// One of the two flanks in traces.
struct TFlankSide {
  const char* name;
  TCheck line;
  TCheck share;
  TCheck points;
};

constexpr TFlankSide kLeft{
    "left flank",
    {TWeldOutcome::noLeftFlank, "left flank"},
    {TWeldOutcome::noLeftFlank, "share of points on the left flank", TRule::notBelow, "", "dPara3"},
    countCheck(TWeldOutcome::flankPointsTooFew, "stripe points of the left flank", TRule::atLeast)};
constexpr TFlankSide kRight{
    "right flank",
    {TWeldOutcome::noRightFlank, "right flank"},
    {TWeldOutcome::noRightFlank, "share of points on the right flank", TRule::notBelow, "", "dPara3"},
    countCheck(TWeldOutcome::flankPointsTooFew, "stripe points of the right flank", TRule::atLeast)};
constexpr TCheck kEnoughPieces = countCheck(TWeldOutcome::tooFewPieces, "straight pieces", TRule::atLeast);

void reportFlank(const TLinePara& flank, const TAngleRange& allowedDeg, const TFlankSide& side,
                 const TTrace& trace) {
  trace.addLine({side.name, flank.k, flank.b, flank.inlierRatio, allowedDeg, flank.isValid});
}

TLent<TLinePara> fitFlank(const std::vector<cv::Point2f>& points, const TAngleRange& rangeDeg,
                          const TCornerParams& params, const TFlankSide& side, const TTrace& trace,
                          TScratch* scratch) {
  TLent<TLinePara> flank =
      fitLineRansac(rangeDeg.min, rangeDeg.max, params.flankTolPx, params.minFlankShare, points, scratch);
  reportFlank(flank, rangeDeg, side, trace);
  return flank;
}

// A consensus line that counts: tells one with too small a share of the points from none.
bool isFlankAccepted(const TLinePara& flank, const TCornerParams& params, const TFlankSide& side,
                     const TTrace& trace) {
  if (!trace.holds(side.line, hasLine(flank))) return false;
  return trace.note(side.share, flank.inlierRatio, params.minFlankShare, flank.isValid);
}

// The points that a flank leaves to the other one.
TLentList<cv::Point2f> pointsBeside(const TLinePara& flank, const std::vector<cv::Point2f>& points,
                                    const TCornerParams& params, TScratch* scratch) {
  return selectLineOutliers(flank.k, flank.b, params.flankTolPx, points, scratch);
}

// Of the pieces in the range the longest in whole pixels, the first of equally long ones; else the first piece.
const TStripePiece& longestPieceWithin(const std::vector<TStripePiece>& pieces, const TAngleRange& rangeDeg) {
  const TStripePiece* longest = nullptr;
  for (const TStripePiece& piece : pieces) {
    if (!isStrictlyInside(rangeDeg, pieceAngleDeg(piece))) continue;
    const bool isLonger = longest == nullptr || truncToInt(pieceLength(piece)) > truncToInt(pieceLength(*longest));
    if (isLonger) longest = &piece;
  }
  return longest != nullptr ? *longest : pieces.front();
}

TLent<TLinePara> refit(const std::vector<cv::Point2f>& points, const TCornerParams& params, const TFlankSide& side,
                       const TTrace& trace, TScratch* scratch) {
  TLent<TLinePara> flank = fitLine(points, params.refitTolPx, scratch);
  reportFlank(flank, kAnyAngleDeg, side, trace);
  return flank;
}

TLent<TLinePara> refitPiece(const TStripePiece& piece, const TCornerParams& params, const TFlankSide& side,
                            const TTrace& trace, TScratch* scratch) {
  const auto k = static_cast<double>(piece.k);
  const auto b = static_cast<double>(piece.b);
  return refit(selectLineInliers(k, b, params.refitTolPx, piece.pts, scratch), params, side, trace, scratch);
}

struct TPiecePair {
  const TStripePiece* left = nullptr;
  const TStripePiece* right = nullptr;
};

// The longest pair of pieces, left before right, each within its range; the first of equally long pairs.
std::optional<TPiecePair> longestPairWithin(const std::vector<TStripePiece>& pieces, const TAngleRange& leftDeg,
                                            const TAngleRange& rightDeg) {
  std::optional<TPiecePair> best;
  double bestLength = 0.0;
  const TStripePiece* left = nullptr;
  for (const TStripePiece& piece : pieces) {
    const double angle = pieceAngleDeg(piece);
    if (left != nullptr && isStrictlyInside(rightDeg, angle)) {
      const double length = pieceLength(*left) + pieceLength(piece);
      if (!best || length > bestLength) {
        best = TPiecePair{left, &piece};
        bestLength = length;
      }
    }
    if (isStrictlyInside(leftDeg, angle) && (left == nullptr || pieceLength(piece) > pieceLength(*left))) {
      left = &piece;
    }
  }
  return best;
}

// A pair is missing for want of a left piece, else of a right one beside it.
const TCheck& missingFlank(const std::vector<TStripePiece>& pieces, const TCornerParams& params) {
  const bool hasLeft = std::any_of(pieces.begin(), pieces.end(), [&](const TStripePiece& p) {
    return isStrictlyInside(params.leftDeg, pieceAngleDeg(p));
  });
  return hasLeft ? kRight.line : kLeft.line;
}

bool isPairThere(const std::optional<TPiecePair>& pair, const std::vector<TStripePiece>& pieces,
                 const TCornerParams& params, const TTrace& trace) {
  if (pair) return trace.holds(kLeft.line, true) && trace.holds(kRight.line, true);
  return trace && trace.holds(missingFlank(pieces, params), false);
}

// One piece that stands in for both flanks goes on to the tests, where it fails; what is wrong is that one is
// missing.
void reportPieceOfBoth(const std::vector<TStripePiece>& pieces, bool isPieceOfBoth, const TCornerParams& params,
                       const TTrace& trace) {
  if (trace && isPieceOfBoth) trace.holds(missingFlank(pieces, params), false);
}

TAngleRange clippedReach(double previousK, const TAngleRange& admissibleDeg) {
  const double angle = slopeToDeg(previousK);
  return {std::clamp(angle - kTrackingReachDeg, admissibleDeg.min, admissibleDeg.max),
          std::clamp(angle + kTrackingReachDeg, admissibleDeg.min, admissibleDeg.max)};
}

}  // namespace

std::optional<TFlankPair> findFlankPairRansac(const std::vector<cv::Point2f>& points, const TCornerParams& params,
                                              const TTrace& trace, TScratch* scratch) {
  TFlankPair flanks;
  flanks.left = fitFlank(points, params.leftDeg, params, kLeft, trace, scratch);
  if (flanks.left.isValid) {
    flanks.right = fitFlank(pointsBeside(flanks.left, points, params, scratch), params.rightDeg, params, kRight,
                            trace, scratch);
  } else {
    flanks.right = fitFlank(points, params.rightDeg, params, kRight, trace, scratch);
    if (flanks.right.isValid) {
      flanks.left = fitFlank(pointsBeside(flanks.right, points, params, scratch), params.leftDeg, params, kLeft,
                             trace, scratch);
    }
  }
  const bool areAccepted =
      isFlankAccepted(flanks.left, params, kLeft, trace) && isFlankAccepted(flanks.right, params, kRight, trace);
  if (!areAccepted) return std::nullopt;
  return flanks;
}

std::optional<TFlankPair> findFlankPairByPolyline(const std::vector<cv::Point2f>& points,
                                                  const TCornerParams& params, const TTrace& trace,
                                                  TScratch* scratch) {
  const TLentList<TStripePiece> pieces = segmentStripe(points, kMergeLimits, kPolygonEpsilonPx, trace, scratch);
  if (!trace.passes(kEnoughPieces, pieces.size(), kMinPieces)) return std::nullopt;
  const TStripePiece& left = longestPieceWithin(pieces, params.leftDeg);
  const TStripePiece& right = longestPieceWithin(pieces, params.rightDeg);
  reportPieceOfBoth(pieces, &left == &right, params, trace);
  TFlankPair flanks{refitPiece(left, params, kLeft, trace, scratch),
                    refitPiece(right, params, kRight, trace, scratch)};
  if (!areFlanksValid(flanks, params, trace)) return std::nullopt;
  return flanks;
}

std::optional<TFlankPair> findFlankPairNear(const std::vector<cv::Point2f>& points, double previousLeftK,
                                            double previousRightK, const TCornerParams& params,
                                            const TTrace& trace, TScratch* scratch) {
  const TAngleRange leftDeg = clippedReach(previousLeftK, params.leftDeg);
  const TAngleRange rightDeg = clippedReach(previousRightK, params.rightDeg);
  const TLentList<TStripePiece> pieces = segmentStripe(points, kMergeLimits, kPolygonEpsilonPx, trace, scratch);
  std::optional<TPiecePair> pair = longestPairWithin(pieces, leftDeg, rightDeg);
  if (!pair) pair = longestPairWithin(pieces, params.leftDeg, params.rightDeg);
  if (!isPairThere(pair, pieces, params, trace)) return std::nullopt;
  const bool areLong = trace.passes(kLeft.points, pair->left->pts.size(), kMinFlankPoints) &&
                       trace.passes(kRight.points, pair->right->pts.size(), kMinFlankPoints);
  if (!areLong) return std::nullopt;
  return TFlankPair{fitFlank(pair->left->pts, leftDeg, params, kLeft, trace, scratch),
                    fitFlank(pair->right->pts, rightDeg, params, kRight, trace, scratch)};
}

void trimFlankOverlap(TFlankPair& flanks, cv::Size imageSize, const TCornerParams& params, const TTrace& trace,
                      TScratch* scratch) {
  std::vector<cv::Point2f>& left = flanks.left.inlierPts;
  std::vector<cv::Point2f>& right = flanks.right.inlierPts;
  if (!flanks.left.isValid || !flanks.right.isValid) return;
  if (left.size() < kMinFlankPoints || right.size() < kMinFlankPoints) return;
  if (!isStrictlyInside(imageSize, intersectionOf(flanks))) return;
  const auto firstX = static_cast<float>(truncToInt(left.front().x));
  const auto lastX = static_cast<float>(truncToInt(right.back().x));
  left.erase(std::remove_if(left.begin(), left.end(), [&](cv::Point2f p) { return p.x > lastX; }), left.end());
  right.erase(std::remove_if(right.begin(), right.end(), [&](cv::Point2f p) { return p.x < firstX; }),
              right.end());
  flanks = {refit(left, params, kLeft, trace, scratch), refit(right, params, kRight, trace, scratch)};
}

bool areFlanksValid(const TFlankPair& flanks, const TCornerParams& params, const TTrace& trace) {
  const auto isValid = [&](const TLinePara& flank, const TFlankSide& side) {
    const bool isShareTooLow = !flank.isValid && hasLine(flank);
    if (isShareTooLow) return trace.note(side.share, flank.inlierRatio, params.minFlankShare, false);
    return trace.holds(side.line, flank.isValid);
  };
  return isValid(flanks.left, kLeft) && isValid(flanks.right, kRight);
}

bool haveFlanksPoints(const TFlankPair& flanks, std::size_t least, const TTrace& trace) {
  const auto hasPoints = [&](const TLinePara& flank, const TFlankSide& side) {
    const bool isLineMissing = !flank.isValid && flank.inlierPts.empty();
    if (isLineMissing) return trace.holds(side.line, false);
    return trace.passes(side.points, flank.inlierPts.size(), least);
  };
  return hasPoints(flanks.left, kLeft) && hasPoints(flanks.right, kRight);
}

cv::Point2f intersectionOf(const TFlankPair& flanks) {
  const double dk = guardDivisor(flanks.right.k - flanks.left.k);
  const double x = (flanks.left.b - flanks.right.b) / dk;
  return {static_cast<float>(x), static_cast<float>(flanks.left.k * x + flanks.left.b)};
}

bool isStrictlyInside(cv::Size imageSize, cv::Point2f p) {
  return p.x > 0.0F && p.x < static_cast<float>(imageSize.width) && p.y > 0.0F &&
         p.y < static_cast<float>(imageSize.height);
}

}  // namespace weld
