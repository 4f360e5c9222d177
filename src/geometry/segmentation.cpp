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
  const bool doColumnsAscend =
      std::is_sorted(points.begin(), points.end(), [](auto a, auto b) { return a.x < b.x; });
  for (std::size_t j = 0; j + 1 < vertices.size(); ++j) {
    TLent<TStripePiece> piece =
        fitPiece(pointsBetween(points, vertices[j].x, vertices[j + 1].x, scratch, doColumnsAscend), kPieceFitTolPx,
                 scratch);
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
  // so that a pass begins at the piece before the merged one. Pieces up to `last` are done with for now.
  void run(const TMergeLimits& limits) {
    if (pieces.size() < 2) return;
    bool hasMerged = false;
    int merges = 0;
    while (merges < kMaxMergePasses) {
      if (hasMerged && last > 0 && areOne(pieces[last - 1], pieces[last], limits)) {
        merge(last - 1, last);
        --last;
      } else if (next == pieces.size()) {
        break;
      } else if (areOne(pieces[last], pieces[next], limits)) {
        merge(last, next++);
        hasMerged = true;
      } else {
        advance();
        hasMerged = false;
        continue;
      }
      ++merges;
    }
    while (next < pieces.size()) advance();
    complete();
    dropMerged();
  }

private:
  static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

  void merge(std::size_t first, std::size_t second) {
    absorbPiece(pieces[second].pts, kPieceFitTolPx, pieces[first], scratch);
    outline = first;
    if (!pieces[first].isFitted) complete();
  }

  void advance() {
    complete();
    ++last;
    std::swap(pieces[last], pieces[next++]);
  }

  void complete() {
    if (outline != kNone) completePiece(kPieceFitTolPx, pieces[outline], scratch);
    outline = kNone;
  }

  void dropMerged() {
    for (std::size_t i = last + 1; i < pieces.size() && scratch != nullptr; ++i) scratch->give(pieces[i]);
    pieces.resize(last + 1);
  }

  std::vector<TStripePiece>& pieces;
  TScratch* scratch;
  std::size_t last = 0;
  std::size_t next = 1;         // the piece behind it; those between have gone into others
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
