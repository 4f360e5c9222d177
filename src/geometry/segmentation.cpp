#include "geometry/segmentation.h"

#include "geometry/piece_fit.h"
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

constexpr TCheck kEnoughPoints = countCheck(TWeldOutcome::tooFewCentres, "smoothed stripe points", TRule::atLeast);

using TPointList = std::vector<cv::Point2f>;

// Deliberate: a point in a vertex's column belongs to neither neighbour.
std::vector<TPointList> cutAtPolygonVertices(const TPointList& points, float polyEpsilonPx) {
  std::vector<TPointList> cuts;
  const std::vector<cv::Point> vertices = approximatePolygon(points, static_cast<double>(polyEpsilonPx));
  for (std::size_t j = 0; j + 1 < vertices.size(); ++j) {
    cuts.push_back(pointsBetween(points, vertices[j].x, vertices[j + 1].x));
  }
  return cuts;
}

std::vector<TStripePiece> fitPieces(std::vector<TPointList> cuts) {
  std::vector<TStripePiece> pieces;
  for (TPointList& cut : cuts) {
    TStripePiece piece = fitPiece(std::move(cut), kPieceFitTolPx);
    if (piece.isFitted && piece.fitPts.size() > kMinPieceInliers) pieces.push_back(std::move(piece));
  }
  return pieces;
}

// One merge per pass, found from the left. Pairs left of the last merge have not changed and would fail again,
// so that a pass begins at the piece before the merged one.
void mergeNeighbours(std::vector<TStripePiece>& pieces, const TMergeLimits& limits) {
  std::size_t i = 0;
  int merges = 0;
  while (i + 1 < pieces.size() && merges < kMaxMergePasses) {
    TStripePiece merged;
    if (!tryMergePieces(pieces[i], pieces[i + 1], merged, limits)) {
      ++i;
      continue;
    }
    pieces[i] = std::move(merged);
    pieces.erase(pieces.begin() + static_cast<std::ptrdiff_t>(i) + 1);
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

std::vector<TStripePiece> segmentStripe(const std::vector<cv::Point2f>& stripePts, const TMergeLimits& limits,
                                        float polyEpsilonPx, const TTrace& trace) {
  const std::vector<cv::Point2f> smoothed = cleanStripe(stripePts, trace);
  if (!trace.passes(kEnoughPoints, smoothed.size(), kMinStripePoints)) return {};
  std::vector<TStripePiece> pieces = fitPieces(cutAtPolygonVertices(smoothed, polyEpsilonPx));
  mergeNeighbours(pieces, limits);
  trace.setPieces(pieces);
  return pieces;
}

bool tryMergePieces(const TStripePiece& first, const TStripePiece& second, TStripePiece& merged,
                    const TMergeLimits& limits) {
  if (!first.isFitted || !second.isFitted) return false;
  const cv::Point2f gap = cv::Point2f(first.endPt) - cv::Point2f(second.startPt);
  const bool isNear = std::abs(gap.x) < limits.gapXPx && std::abs(gap.y) < limits.gapYPx;
  if (!isNear || !(jointHeight(first, second) < limits.heightPx)) return false;
  merged = fitPiece(joinPoints(first.pts, second.pts), kPieceFitTolPx);
  return true;
}

}  // namespace weld
