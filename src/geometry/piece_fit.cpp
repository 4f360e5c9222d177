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

void setEnds(TPiece& piece) {
  piece.isFitted = true;
  piece.startPt = roundPoint(piece.pts.front());
  piece.endPt = roundPoint(piece.pts.back());
}

// Mean and largest distance of all points, and the points nearer than the tolerance.
void measureResiduals(double k, double b, float fitTolPx, TPiece& piece) {
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

TPiece fitPiece(TPoints points, float fitTolPx, TMemory* memory) {
  TPiece piece(std::move(points));
  completePiece(fitTolPx, piece, memory);
  return piece;
}

void completePiece(float fitTolPx, TPiece& piece, TMemory* memory) {
  const zelFit::TLineFitResult fit = fitStripePoints(piece.pts, static_cast<double>(fitTolPx), memory);
  if (!fit.success) return;
  measureResiduals(fit.slope, fit.intercept, fitTolPx, piece);
  piece.k = static_cast<float>(fit.slope);
  piece.b = static_cast<float>(fit.intercept);
  setEnds(piece);
}

void absorbPiece(TPointView points, float fitTolPx, TPiece& piece, TMemory* memory) {
  TPoints joined = std::move(piece.pts);
  joined.insert(joined.end(), points.begin(), points.end());
  piece = TPiece(std::move(joined));
  if (isSureToFit(piece.pts, static_cast<double>(fitTolPx), memory)) setEnds(piece);
}

double pieceLength(const TPiece& piece) {
  const double dx = static_cast<double>(piece.endPt.x) - piece.startPt.x;
  const double dy = static_cast<double>(piece.endPt.y) - piece.startPt.y;
  return std::sqrt(dx * dx + dy * dy);
}

double pieceAngleDeg(const TPiece& piece) {
  const auto angle = static_cast<float>(arcTangent(static_cast<double>(piece.k)));
  return static_cast<double>(angle) * kDegPerRad;
}

TPoints joinPoints(TPointView first, TPointView second, TMemory* memory) {
  TPoints joined(memory);
  joined.reserve(first.size() + second.size());
  joined.insert(joined.end(), first.begin(), first.end());
  joined.insert(joined.end(), second.begin(), second.end());
  return joined;
}

}  // namespace weld
