#include "detectors/piece_end.h"

#include "geometry/piece_fit.h"

#include <algorithm>

namespace weld {

namespace {

constexpr std::size_t kPointsNearEnd = 100;
constexpr double kBandTop = 0.3;  // share of the image height
constexpr double kBandBottom = 0.7;

constexpr TCheck kRefit{
    {25, TWeldOutcome::fitTooWeak, "end of a piece", "no line through the points near the end of a piece"},
    "line near the end of the piece"};

bool isOutsideMiddleBand(int row, int rows) {
  return rows * kBandTop > row || row > rows * kBandBottom;
}

void reportRefit(const TPieceEnd& end, const TPiece& refitted, const TTrace& trace) {
  if (!trace) return;
  const double share = static_cast<double>(refitted.fitPts.size()) / static_cast<double>(refitted.pts.size());
  trace.addLine(
      {end.name, static_cast<double>(refitted.k), static_cast<double>(refitted.b), share, {-90.0, 90.0}, true});
}

}  // namespace

TPointView lastPoints(TPointView points) {
  const std::size_t count = std::min(points.size(), kPointsNearEnd);
  return points.part(points.size() - count, count);
}

// Deliberate: the last point is left out of a short list, unlike in lastPoints.
TPointView firstPoints(TPointView points) {
  return points.part(0, points.empty() ? 0 : std::min(points.size() - 1, kPointsNearEnd));
}

std::optional<cv::Point2f> refinePieceEnd(const TFrame& frame, const TPiece& piece, const TPieceEnd& end,
                                          TPointView supportPts, const TGrooveRule& rule) {
  TRoughPos rough{cv::Point2f(end.roughPos), piece.k, piece.b};
  if (isOutsideMiddleBand(end.bandRow, frame.image.rows)) {
    TPoints nearEnd(end.pointsNearEnd.begin(), end.pointsNearEnd.end(), frame.memory);
    const TPiece refitted = fitPiece(std::move(nearEnd), kPieceFitTolPx, frame.memory);
    if (!frame.trace.holds(kRefit, refitted.isFitted)) return std::nullopt;
    rough.k = refitted.k;
    rough.b = refitted.b;
    reportRefit(end, refitted, frame.trace);
  }
  return refineGroovePos(frame, supportPts, rough, rule);
}

}  // namespace weld
