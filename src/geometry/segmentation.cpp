#include "geometry/segmentation.h"

#include "geometry/piece_fit.h"
#include "geometry/polygon.h"
#include "geometry/stripe_smoothing.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace weld {

namespace {

constexpr std::size_t kMinStripePoints = 20;
constexpr std::size_t kMinPieceInliers = 10;  // a piece needs more
constexpr int kMaxMergePasses = 101;

constexpr std::size_t kUsualPieces = 8;

constexpr TCheck kEnoughPoints = countCheck(TWeldOutcome::tooFewCentres, "smoothed stripe points", TRule::atLeast);

// Deliberate: a point in a vertex's column belongs to neither neighbour.
TLentList<TStripePiece> fitBetweenPolygonVertices(const std::vector<cv::Point2f>& points, float polyEpsilonPx,
                                                  TScratch* scratch) {
  const TLentList<cv::Point> vertices = approximatePolygon(points, static_cast<double>(polyEpsilonPx), scratch);
  TLentList<TStripePiece> pieces(scratch, kUsualPieces);
  for (std::size_t j = 0; j + 1 < vertices.size(); ++j) {
    TLent<TStripePiece> piece =
        fitPiece(pointsBetween(points, vertices[j].x, vertices[j + 1].x, scratch), kPieceFitTolPx, scratch);
    if (piece.isFitted && piece.fitPts.size() > kMinPieceInliers) pieces.push_back(std::move(piece));
  }
  return pieces;
}

// One merge per pass, found from the left. Pairs left of the last merge have not changed and would fail again,
// so that a pass begins at the piece before the merged one.
void mergeNeighbours(std::vector<TStripePiece>& pieces, const TMergeLimits& limits, TScratch* scratch) {
  std::size_t i = 0;
  int merges = 0;
  while (i + 1 < pieces.size() && merges < kMaxMergePasses) {
    if (!tryMergePieces(pieces[i], pieces[i + 1], pieces[i], limits, scratch)) {
      ++i;
      continue;
    }
    removePiece(pieces, i + 1, scratch);
    i = i > 0 ? i - 1 : 0;
    ++merges;
  }
}

// Height of the higher of the two inner ends over the chord from the first start to the second end.
float jointHeight(const TStripePiece& first, const TStripePiece& second) {
  return std::max(heightOverChord(first.startPt, second.endPt, first.endPt),
                  heightOverChord(first.startPt, second.endPt, second.startPt));
}

}  // namespace

TLentList<TStripePiece> segmentStripe(const std::vector<cv::Point2f>& stripePts, const TMergeLimits& limits,
                                      float polyEpsilonPx, const TTrace& trace, TScratch* scratch) {
  const TLentList<cv::Point2f> smoothed = cleanStripe(stripePts, trace, scratch);
  if (!trace.passes(kEnoughPoints, smoothed.size(), kMinStripePoints)) return {};
  TLentList<TStripePiece> pieces = fitBetweenPolygonVertices(smoothed, polyEpsilonPx, scratch);
  mergeNeighbours(pieces, limits, scratch);
  trace.setPieces(pieces);
  return pieces;
}

bool tryMergePieces(const TStripePiece& first, const TStripePiece& second, TStripePiece& merged,
                    const TMergeLimits& limits, TScratch* scratch) {
  if (!first.isFitted || !second.isFitted) return false;
  const cv::Point2f gap = cv::Point2f(first.endPt) - cv::Point2f(second.startPt);
  const bool isNear = std::abs(gap.x) < limits.gapXPx && std::abs(gap.y) < limits.gapYPx;
  if (!isNear || !(jointHeight(first, second) < limits.heightPx)) return false;
  TLent<TStripePiece> joined = fitPiece(joinPoints(first.pts, second.pts, scratch), kPieceFitTolPx, scratch);
  std::swap(merged, static_cast<TStripePiece&>(joined));
  return true;
}

}  // namespace weld
