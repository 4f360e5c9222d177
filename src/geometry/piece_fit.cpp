#include "geometry/piece_fit.h"

#include "geometry/line_fitting.h"
#include "support/arc_tangent.h"
#include "support/line_fit.h"
#include "support/line_math.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace weld {

namespace {

void setEnds(TStripePiece& piece) {
  piece.isFitted = true;
  piece.lineState = 1;
  piece.startPt = roundPoint(piece.pts.front());
  piece.endPt = roundPoint(piece.pts.back());
}

// Mean and largest distance of all points, and the points nearer than the tolerance.
void measureResiduals(double k, double b, float fitTolPx, TStripePiece& piece) {
  double sum = 0.0;
  piece.maxDist = 0.0F;
  piece.fitPts.reserve(piece.pts.size());
  for (const cv::Point2f& p : piece.pts) {
    const auto distance =
        static_cast<float>(pointLineDistance(k, b, static_cast<double>(p.x), static_cast<double>(p.y)));
    if (distance < fitTolPx) piece.fitPts.push_back(p);
    piece.maxDist = std::max(piece.maxDist, distance);
    sum += static_cast<double>(distance);
  }
  piece.meanDist = static_cast<float>(sum / static_cast<double>(piece.pts.size()));
}

}  // namespace

TLent<TStripePiece> fitPiece(TLentList<cv::Point2f> points, float fitTolPx, TScratch* scratch) {
  TLent<TStripePiece> piece(scratch, 0);
  piece.pts.swap(points);
  completePiece(fitTolPx, piece, scratch);
  return piece;
}

void completePiece(float fitTolPx, TStripePiece& piece, TScratch* scratch) {
  const zelFit::TLineFitResult fit = fitStripePoints(piece.pts, static_cast<double>(fitTolPx), scratch);
  if (!fit.success) return;
  measureResiduals(fit.slope, fit.intercept, fitTolPx, piece);
  piece.k = static_cast<float>(fit.slope);
  piece.b = static_cast<float>(fit.intercept);
  setEnds(piece);
}

void absorbPiece(const std::vector<cv::Point2f>& points, float fitTolPx, TStripePiece& piece, TScratch* scratch) {
  TStripePiece joined;
  joined.pts.swap(piece.pts);
  joined.pts.insert(joined.pts.end(), points.begin(), points.end());
  joined.fitPts.swap(piece.fitPts);
  joined.fitPts.clear();
  std::swap(piece, joined);
  if (isSureToFit(piece.pts, static_cast<double>(fitTolPx), scratch)) setEnds(piece);
}

double pieceLength(const TStripePiece& piece) {
  const double dx = static_cast<double>(piece.endPt.x) - piece.startPt.x;
  const double dy = static_cast<double>(piece.endPt.y) - piece.startPt.y;
  return std::sqrt(dx * dx + dy * dy);
}

double pieceAngleDeg(const TStripePiece& piece) {
  const auto angle = static_cast<float>(arcTangent(static_cast<double>(piece.k)));
  return static_cast<double>(angle) * kDegPerRad;
}

TLentList<cv::Point2f> joinPoints(const std::vector<cv::Point2f>& first, const std::vector<cv::Point2f>& second,
                                  TScratch* scratch) {
  TLentList<cv::Point2f> joined(scratch, first.size() + second.size());
  joined.insert(joined.end(), first.begin(), first.end());
  joined.insert(joined.end(), second.begin(), second.end());
  return joined;
}

void removePiece(std::vector<TStripePiece>& pieces, std::size_t index, TScratch* scratch) {
  const auto removed = pieces.begin() + static_cast<std::ptrdiff_t>(index);
  std::rotate(removed, removed + 1, pieces.end());
  if (scratch != nullptr) scratch->give(pieces.back());
  pieces.pop_back();
}

}  // namespace weld
