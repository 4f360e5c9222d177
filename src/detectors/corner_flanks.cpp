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

TLinePara fitFlank(const std::vector<cv::Point2f>& points, const TAngleRange& rangeDeg,
                   const TCornerParams& params) {
  return fitLineRansac(rangeDeg.min, rangeDeg.max, params.flankTolPx, params.minFlankShare, points);
}

// The points that a flank leaves to the other one.
std::vector<cv::Point2f> pointsBeside(const TLinePara& flank, const std::vector<cv::Point2f>& points,
                                      const TCornerParams& params) {
  return selectLineOutliers(flank.k, flank.b, params.flankTolPx, points);
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

TLinePara refitPiece(const TStripePiece& piece, const TCornerParams& params) {
  const auto k = static_cast<double>(piece.k);
  const auto b = static_cast<double>(piece.b);
  return fitLine(selectLineInliers(k, b, params.refitTolPx, piece.pts), params.refitTolPx);
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

TAngleRange clippedReach(double previousK, const TAngleRange& admissibleDeg) {
  const double angle = slopeToDeg(previousK);
  return {std::clamp(angle - kTrackingReachDeg, admissibleDeg.min, admissibleDeg.max),
          std::clamp(angle + kTrackingReachDeg, admissibleDeg.min, admissibleDeg.max)};
}

}  // namespace

std::optional<TFlankPair> findFlankPairRansac(const std::vector<cv::Point2f>& points,
                                              const TCornerParams& params) {
  TFlankPair flanks;
  flanks.left = fitFlank(points, params.leftDeg, params);
  if (flanks.left.isValid) {
    flanks.right = fitFlank(pointsBeside(flanks.left, points, params), params.rightDeg, params);
  } else {
    flanks.right = fitFlank(points, params.rightDeg, params);
    if (flanks.right.isValid) {
      flanks.left = fitFlank(pointsBeside(flanks.right, points, params), params.leftDeg, params);
    }
  }
  if (!flanks.left.isValid || !flanks.right.isValid) return std::nullopt;
  return flanks;
}

std::optional<TFlankPair> findFlankPairByPolyline(const std::vector<cv::Point2f>& points,
                                                  const TCornerParams& params) {
  const std::vector<TStripePiece> pieces = segmentStripe(points, kMergeLimits);
  if (pieces.size() < 2) return std::nullopt;
  TFlankPair flanks{refitPiece(longestPieceWithin(pieces, params.leftDeg), params),
                    refitPiece(longestPieceWithin(pieces, params.rightDeg), params)};
  if (!flanks.left.isValid || !flanks.right.isValid) return std::nullopt;
  return flanks;
}

std::optional<TFlankPair> findFlankPairNear(const std::vector<cv::Point2f>& points, double previousLeftK,
                                            double previousRightK, const TCornerParams& params) {
  const TAngleRange leftDeg = clippedReach(previousLeftK, params.leftDeg);
  const TAngleRange rightDeg = clippedReach(previousRightK, params.rightDeg);
  const std::vector<TStripePiece> pieces = segmentStripe(points, kMergeLimits);
  std::optional<TPiecePair> pair = longestPairWithin(pieces, leftDeg, rightDeg);
  if (!pair) pair = longestPairWithin(pieces, params.leftDeg, params.rightDeg);
  if (!pair || pair->left->pts.size() < kMinFlankPoints || pair->right->pts.size() < kMinFlankPoints) {
    return std::nullopt;
  }
  return TFlankPair{fitFlank(pair->left->pts, leftDeg, params), fitFlank(pair->right->pts, rightDeg, params)};
}

void trimFlankOverlap(TFlankPair& flanks, cv::Size imageSize, const TCornerParams& params) {
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
  flanks = {fitLine(left, params.refitTolPx), fitLine(right, params.refitTolPx)};
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
