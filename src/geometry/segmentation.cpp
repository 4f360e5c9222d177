#include "geometry/segmentation.h"

#include "geometry/piece_fit.h"
#include "geometry/polygon.h"
#include "geometry/stripe_smoothing.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>
#include <limits>
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

// Height of the higher of the two inner ends over the chord from the first start to the second end.
float jointHeight(const TStripePiece& first, const TStripePiece& second) {
  return std::max(heightOverChord(first.startPt, second.endPt, first.endPt),
                  heightOverChord(first.startPt, second.endPt, second.startPt));
}

bool areOne(const TStripePiece& first, const TStripePiece& second, const TMergeLimits& limits) {
  if (!first.isFitted || !second.isFitted) return false;
  const cv::Point2f gap = cv::Point2f(first.endPt) - cv::Point2f(second.startPt);
  const bool isNear = std::abs(gap.x) < limits.gapXPx && std::abs(gap.y) < limits.gapYPx;
  return isNear && jointHeight(first, second) < limits.heightPx;
}

// Merges neighbours. Whether pieces are one depends on their ends alone, so that the line of a merged piece can
// wait until it merges no further: at most one piece is but an outline so far, the one merged last.
class TMerger {
public:
  TMerger(std::vector<TStripePiece>& stripePieces, TScratch* memory) : pieces(stripePieces), scratch(memory) {}

  // One merge per pass, found from the left. Pairs left of the last merge have not changed and would fail again,
  // so that a pass begins at the piece before the merged one.
  void run(const TMergeLimits& limits) {
    std::size_t i = 0;
    int merges = 0;
    while (i + 1 < pieces.size() && merges < kMaxMergePasses) {
      if (!areOne(pieces[i], pieces[i + 1], limits)) {
        if (i == outline) complete();
        ++i;
        continue;
      }
      mergeWithNext(i);
      i = i > 0 ? i - 1 : 0;
      ++merges;
    }
    complete();
  }

private:
  static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

  void mergeWithNext(std::size_t i) {
    TLent<TStripePiece> joined =
        outlinePiece(joinPoints(pieces[i].pts, pieces[i + 1].pts, scratch), kPieceFitTolPx, scratch);
    std::swap(pieces[i], static_cast<TStripePiece&>(joined));
    removePiece(pieces, i + 1, scratch);
    outline = i;
    if (!pieces[i].isFitted) complete();
  }

  void complete() {
    if (outline != kNone) completePiece(kPieceFitTolPx, pieces[outline], scratch);
    outline = kNone;
  }

  std::vector<TStripePiece>& pieces;
  TScratch* scratch;
  std::size_t outline = kNone;  // index of the piece
};

}  // namespace

TLentList<TStripePiece> segmentStripe(const std::vector<cv::Point2f>& stripePts, const TMergeLimits& limits,
                                      float polyEpsilonPx, const TTrace& trace, TScratch* scratch) {
  const TLentList<cv::Point2f> smoothed = cleanStripe(stripePts, trace, scratch);
  if (!trace.passes(kEnoughPoints, smoothed.size(), kMinStripePoints)) return {};
  TLentList<TStripePiece> pieces = fitBetweenPolygonVertices(smoothed, polyEpsilonPx, scratch);
  TMerger(pieces, scratch).run(limits);
  trace.setPieces(pieces);
  return pieces;
}

bool tryMergePieces(const TStripePiece& first, const TStripePiece& second, TStripePiece& merged,
                    const TMergeLimits& limits, TScratch* scratch) {
  if (!areOne(first, second, limits)) return false;
  TLent<TStripePiece> joined = fitPiece(joinPoints(first.pts, second.pts, scratch), kPieceFitTolPx, scratch);
  std::swap(merged, static_cast<TStripePiece&>(joined));
  return true;
}

}  // namespace weld
