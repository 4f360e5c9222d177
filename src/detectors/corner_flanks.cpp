#include "detectors/corner_flanks.h"

#include "detectors/common_checks.h"
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
    {{20, TWeldOutcome::elementMissing, "left flank", "no left flank in its range of angles"}, "left flank"},
    {{20, TWeldOutcome::elementMissing, "left flank", "no left flank in its range of angles"},
     "share of points on the left flank",
     TRule::notBelow,
     "",
     "minFlankShare"},
    countCheck({22, TWeldOutcome::elementTooShort, "left flank", "too few stripe points on a flank"},
               "stripe points of the left flank", TRule::atLeast)};
constexpr TFlankSide kRight{
    "right flank",
    {{21, TWeldOutcome::elementMissing, "right flank", "no right flank in its range of angles"}, "right flank"},
    {{21, TWeldOutcome::elementMissing, "right flank", "no right flank in its range of angles"},
     "share of points on the right flank",
     TRule::notBelow,
     "",
     "minFlankShare"},
    countCheck({22, TWeldOutcome::elementTooShort, "right flank", "too few stripe points on a flank"},
               "stripe points of the right flank", TRule::atLeast)};

void reportFlank(const TFittedLine& flank, const TAngleRange& allowedDeg, const TFlankSide& side,
                 const TTrace& trace) {
  trace.addLine({side.name, flank.k, flank.b, flank.inlierRatio, allowedDeg, flank.isValid});
}

TFittedLine fitFlank(const TCornerCase& corner, TPointView points, const TAngleRange& rangeDeg,
                     const TFlankSide& side) {
  const TCornerParams& params = corner.params;
  TFittedLine flank = fitLineRansac(
      points, {rangeDeg.min, rangeDeg.max, params.flankTolerancePx, params.minFlankShare}, corner.frame.memory);
  reportFlank(flank, rangeDeg, side, corner.frame.trace);
  return flank;
}

// A consensus line that counts: tells one with too small a share of the points from none.
bool isFlankAccepted(const TCornerCase& corner, const TFittedLine& flank, const TFlankSide& side) {
  const TTrace& trace = corner.frame.trace;
  if (!trace.holds(side.line, hasLine(flank))) return false;
  return trace.note(side.share, flank.inlierRatio, corner.params.minFlankShare, flank.isValid);
}

// The points that a flank leaves to the other one.
TPoints pointsBeside(const TCornerCase& corner, const TFittedLine& flank, TPointView points) {
  return selectLineOutliers(flank.k, flank.b, corner.params.flankTolerancePx, points, corner.frame.memory);
}

// Of the pieces in the range the longest in whole pixels, the first of equally long ones; else the first piece.
const TPiece& longestPieceWithin(const TPieces& pieces, const TAngleRange& rangeDeg) {
  const TPiece* longest = nullptr;
  for (const TPiece& piece : pieces) {
    if (!isStrictlyInside(rangeDeg, pieceAngleDeg(piece))) continue;
    const bool isLonger = longest == nullptr || truncToInt(pieceLength(piece)) > truncToInt(pieceLength(*longest));
    if (isLonger) longest = &piece;
  }
  return longest != nullptr ? *longest : pieces.front();
}

TFittedLine refit(const TCornerCase& corner, TPointView points, const TFlankSide& side) {
  TFittedLine flank = fitLine(points, corner.params.fitScalePx, corner.frame.memory);
  reportFlank(flank, kAnyAngleDeg, side, corner.frame.trace);
  return flank;
}

TFittedLine refitPiece(const TCornerCase& corner, const TPiece& piece, const TFlankSide& side) {
  const auto k = static_cast<double>(piece.k);
  const auto b = static_cast<double>(piece.b);
  return refit(corner, selectLineInliers(k, b, corner.params.fitScalePx, piece.pts, corner.frame.memory), side);
}

struct TPiecePair {
  const TPiece* left = nullptr;
  const TPiece* right = nullptr;
};

// The longest pair of pieces, left before right, each within its range; the first of equally long pairs.
std::optional<TPiecePair> longestPairWithin(const TPieces& pieces, const TAngleRange& leftDeg,
                                            const TAngleRange& rightDeg) {
  std::optional<TPiecePair> best;
  double bestLength = 0.0;
  const TPiece* left = nullptr;
  for (const TPiece& piece : pieces) {
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
const TCheck& missingFlank(const TCornerCase& corner, const TPieces& pieces) {
  const bool hasLeft = std::any_of(pieces.begin(), pieces.end(), [&](const TPiece& p) {
    return isStrictlyInside(corner.params.leftDeg, pieceAngleDeg(p));
  });
  return hasLeft ? kRight.line : kLeft.line;
}

bool isPairThere(const TCornerCase& corner, const std::optional<TPiecePair>& pair, const TPieces& pieces) {
  const TTrace& trace = corner.frame.trace;
  if (pair) return trace.holds(kLeft.line, true) && trace.holds(kRight.line, true);
  return trace && trace.holds(missingFlank(corner, pieces), false);
}

// One piece that stands in for both flanks goes on to the tests, where it fails; what is wrong is that one is
// missing.
void reportPieceOfBoth(const TCornerCase& corner, const TPieces& pieces) {
  if (corner.frame.trace) corner.frame.trace.holds(missingFlank(corner, pieces), false);
}

TAngleRange clippedReach(double previousK, const TAngleRange& admissibleDeg) {
  const double angle = slopeToDeg(previousK);
  return {std::clamp(angle - kTrackingReachDeg, admissibleDeg.min, admissibleDeg.max),
          std::clamp(angle + kTrackingReachDeg, admissibleDeg.min, admissibleDeg.max)};
}

}  // namespace

std::optional<TFlankPair> findFlankPairRansac(const TCornerCase& corner, TPointView points) {
  const TCornerParams& params = corner.params;
  TFlankPair flanks{fitFlank(corner, points, params.leftDeg, kLeft), TFittedLine(corner.frame.memory)};
  if (flanks.left.isValid) {
    flanks.right = fitFlank(corner, pointsBeside(corner, flanks.left, points), params.rightDeg, kRight);
  } else {
    flanks.right = fitFlank(corner, points, params.rightDeg, kRight);
    if (flanks.right.isValid) {
      flanks.left = fitFlank(corner, pointsBeside(corner, flanks.right, points), params.leftDeg, kLeft);
    }
  }
  if (!isFlankAccepted(corner, flanks.left, kLeft) || !isFlankAccepted(corner, flanks.right, kRight)) return {};
  return flanks;
}

std::optional<TFlankPair> findFlankPairByPolyline(const TCornerCase& corner, TPointView points) {
  const TPieces pieces = segmentStripe(corner.frame, points, kMergeLimits);
  if (!corner.frame.trace.passes(kEnoughPieces, pieces.size(), kMinPieces)) return std::nullopt;
  const TPiece& left = longestPieceWithin(pieces, corner.params.leftDeg);
  const TPiece& right = longestPieceWithin(pieces, corner.params.rightDeg);
  if (&left == &right) reportPieceOfBoth(corner, pieces);
  TFlankPair flanks{refitPiece(corner, left, kLeft), refitPiece(corner, right, kRight)};
  if (!areFlanksValid(corner, flanks)) return std::nullopt;
  return flanks;
}

std::optional<TFlankPair> findFlankPairNear(const TCornerCase& corner, TPointView points,
                                            const TFlankSlopes& previous) {
  const TCornerParams& params = corner.params;
  const TAngleRange leftDeg = clippedReach(previous.left, params.leftDeg);
  const TAngleRange rightDeg = clippedReach(previous.right, params.rightDeg);
  const TPieces pieces = segmentStripe(corner.frame, points, kMergeLimits);
  std::optional<TPiecePair> pair = longestPairWithin(pieces, leftDeg, rightDeg);
  if (!pair) pair = longestPairWithin(pieces, params.leftDeg, params.rightDeg);
  if (!isPairThere(corner, pair, pieces)) return std::nullopt;
  const bool areLong = corner.frame.trace.passes(kLeft.points, pair->left->pts.size(), kMinFlankPoints) &&
                       corner.frame.trace.passes(kRight.points, pair->right->pts.size(), kMinFlankPoints);
  if (!areLong) return std::nullopt;
  return TFlankPair{fitFlank(corner, pair->left->pts, leftDeg, kLeft),
                    fitFlank(corner, pair->right->pts, rightDeg, kRight)};
}

void trimFlankOverlap(const TCornerCase& corner, TFlankPair& flanks) {
  TPoints& left = flanks.left.inliers;
  TPoints& right = flanks.right.inliers;
  if (!flanks.left.isValid || !flanks.right.isValid) return;
  if (left.size() < kMinFlankPoints || right.size() < kMinFlankPoints) return;
  if (!isStrictlyInside(corner.frame.image.size(), crossingOf(flanks))) return;
  const auto firstX = static_cast<float>(truncToInt(left.front().x));
  const auto lastX = static_cast<float>(truncToInt(right.back().x));
  left.erase(std::remove_if(left.begin(), left.end(), [&](cv::Point2f p) { return p.x > lastX; }), left.end());
  right.erase(std::remove_if(right.begin(), right.end(), [&](cv::Point2f p) { return p.x < firstX; }),
              right.end());
  flanks = {refit(corner, left, kLeft), refit(corner, right, kRight)};
}

bool areFlanksValid(const TCornerCase& corner, const TFlankPair& flanks) {
  const TTrace& trace = corner.frame.trace;
  const auto isValid = [&](const TFittedLine& flank, const TFlankSide& side) {
    const bool isShareTooLow = !flank.isValid && hasLine(flank);
    if (isShareTooLow) return trace.note(side.share, flank.inlierRatio, corner.params.minFlankShare, false);
    return trace.holds(side.line, flank.isValid);
  };
  return isValid(flanks.left, kLeft) && isValid(flanks.right, kRight);
}

bool haveFlanksPoints(const TFlankPair& flanks, std::size_t least, const TTrace& trace) {
  const auto hasPoints = [&](const TFittedLine& flank, const TFlankSide& side) {
    const bool isLineMissing = !flank.isValid && flank.inliers.empty();
    if (isLineMissing) return trace.holds(side.line, false);
    return trace.passes(side.points, flank.inliers.size(), least);
  };
  return hasPoints(flanks.left, kLeft) && hasPoints(flanks.right, kRight);
}

cv::Point2f crossingOf(const TFlankPair& flanks) {
  return crossingOf(TSlopeLine{flanks.left.k, flanks.left.b}, TSlopeLine{flanks.right.k, flanks.right.b},
                    flanks.right.k - flanks.left.k);
}

bool isStrictlyInside(cv::Size imageSize, cv::Point2f p) {
  return p.x > 0.0F && p.x < static_cast<float>(imageSize.width) && p.y > 0.0F &&
         p.y < static_cast<float>(imageSize.height);
}

}  // namespace weld
