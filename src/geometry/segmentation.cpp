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

constexpr TCheck kEnoughPoints = countCheck({4, TWeldOutcome::noStripe, "stripe", "too few stripe points"},
                                            "smoothed stripe points", TRule::atLeast);

// Deliberate: a point in a vertex's column belongs to neither neighbour.
TPieces fitBetweenPolygonVertices(TPointView points, float polyEpsilonPx, TMemory* memory) {
  const TList<cv::Point> vertices = approximatePolygon(points, static_cast<double>(polyEpsilonPx), memory);
  TPieces pieces(memory);
  const TPointsByColumn byColumn(points, memory);
  TList<int> columns(vertices.size(), memory);
  std::transform(vertices.begin(), vertices.end(), columns.begin(), [](cv::Point v) { return v.x; });
  if (!byColumn.canCut(columns)) return pieces;
  pieces.reserve(std::max<std::size_t>(vertices.size(), 1) - 1);
  for (std::size_t j = 0; j + 1 < columns.size(); ++j) {
    TPiece piece = fitPiece(byColumn.between({columns[j], columns[j + 1]}), kPieceFitTolPx, memory);
    if (piece.isFitted && piece.fitPts.size() > kMinPieceInliers) pieces.push_back(std::move(piece));
  }
  return pieces;
}

// Height of the higher of the two inner ends over the chord from the first start to the second end.
float jointHeight(const TPiece& first, const TPiece& second) {
  return std::max(heightOverChord(first.startPt, second.endPt, first.endPt),
                  heightOverChord(first.startPt, second.endPt, second.startPt));
}

void reportPieces(const TPieces& pieces, const TTrace& trace) {
  if (!trace) return;
  trace.attempt().pieces.clear();
  for (const TPiece& p : pieces) {
    trace.attempt().pieces.push_back({p.startPt, p.endPt, static_cast<double>(p.k), static_cast<double>(p.b),
                                      static_cast<std::int32_t>(p.pts.size()),
                                      static_cast<std::int32_t>(p.fitPts.size()), static_cast<double>(p.meanDist),
                                      static_cast<double>(p.maxDist), p.isFitted});
  }
}

// Merges neighbours. Whether pieces are one depends on their ends alone, so that the line of a merged piece can
// wait until it merges no further: at most one piece is but an outline so far, the one merged last.
class TMerger {
public:
  explicit TMerger(TPieces& stripePieces) : pieces(stripePieces), memory(pieces.get_allocator().resource()) {}

  // One merge per pass, found from the left. Pairs left of the last merge have not changed and would fail again,
  // so that a pass begins at the piece before the merged one. Pieces up to `last` are done with for now.
  void run(const TMergeLimits& limits) {
    if (pieces.size() < 2) return;
    bool hasMerged = false;
    int merges = 0;
    while (merges < kMaxMergePasses) {
      if (hasMerged && last > 0 && areOnePiece(pieces[last - 1], pieces[last], limits)) {
        merge(last - 1, last);
        --last;
      } else if (next == pieces.size()) {
        break;
      } else if (areOnePiece(pieces[last], pieces[next], limits)) {
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
    pieces.erase(pieces.begin() + static_cast<std::ptrdiff_t>(last) + 1, pieces.end());
  }

private:
  static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

  void merge(std::size_t first, std::size_t second) {
    absorbPiece(pieces[second].pts, kPieceFitTolPx, pieces[first], memory);
    outline = first;
    if (!pieces[first].isFitted) complete();
  }

  void advance() {
    complete();
    ++last;
    std::swap(pieces[last], pieces[next++]);
  }

  void complete() {
    if (outline != kNone) completePiece(kPieceFitTolPx, pieces[outline], memory);
    outline = kNone;
  }

  TPieces& pieces;
  TMemory* memory;
  std::size_t last = 0;
  std::size_t next = 1;         // the piece behind it; those between have gone into others
  std::size_t outline = kNone;  // index of the piece
};

}  // namespace

bool areOnePiece(const TPiece& first, const TPiece& second, const TMergeLimits& limits) {
  if (!first.isFitted || !second.isFitted) return false;
  const cv::Point2f gap = cv::Point2f(first.endPt) - cv::Point2f(second.startPt);
  const bool isNear = std::abs(gap.x) < limits.gapXPx && std::abs(gap.y) < limits.gapYPx;
  return isNear && jointHeight(first, second) < limits.heightPx;
}

TPieces segmentStripe(const TFrame& frame, TPointView stripePts, const TMergeLimits& limits, float polyEpsilonPx) {
  const TPoints smoothed = cleanStripe(frame, stripePts);
  if (!frame.trace.passes(kEnoughPoints, smoothed.size(), kMinStripePoints)) return TPieces(frame.memory);
  TPieces pieces = fitBetweenPolygonVertices(smoothed, polyEpsilonPx, frame.memory);
  TMerger(pieces).run(limits);
  reportPieces(pieces, frame.trace);
  return pieces;
}

}  // namespace weld
