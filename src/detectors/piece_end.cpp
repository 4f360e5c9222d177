#include "detectors/piece_end.h"

#include "geometry/groove.h"
#include "geometry/piece_fit.h"

#include <algorithm>
#include <utility>

namespace weld {

namespace {

constexpr std::size_t kPointsNearEnd = 100;
constexpr double kBandTop = 0.3;  // share of the image height
constexpr double kBandBottom = 0.7;

constexpr TCheck kRefit{TWeldOutcome::endNotRefitted, "line near the end of the piece"};

bool isOutsideMiddleBand(int row, int rows) {
  return rows * kBandTop > row || row > rows * kBandBottom;
}

void reportRefit(const TPieceEnd& end, const TStripePiece& refitted, const TTrace& trace) {
  if (!trace) return;
  const double share = static_cast<double>(refitted.fitPts.size()) / static_cast<double>(refitted.pts.size());
  trace.addLine(
      {end.name, static_cast<double>(refitted.k), static_cast<double>(refitted.b), share, {-90.0, 90.0}, true});
}

}  // namespace

TLentList<cv::Point2f> lastPoints(const std::vector<cv::Point2f>& points, TScratch* scratch) {
  TLentList<cv::Point2f> last(scratch, kPointsNearEnd);
  last.assign(points.end() - static_cast<std::ptrdiff_t>(std::min(points.size(), kPointsNearEnd)), points.end());
  return last;
}

// Deliberate: the last point is left out of a short list, unlike in lastPoints.
TLentList<cv::Point2f> firstPoints(const std::vector<cv::Point2f>& points, TScratch* scratch) {
  const std::size_t count = points.empty() ? 0 : std::min(points.size() - 1, kPointsNearEnd);
  TLentList<cv::Point2f> first(scratch, kPointsNearEnd);
  first.assign(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(count));
  return first;
}

std::optional<cv::Point2f> refinePieceEnd(const TStripePiece& piece, TPieceEnd end,
                                          const std::vector<cv::Point2f>& supportPts, const cv::Mat& image,
                                          const TWeldParams& params, const TTrace& trace, TScratch* scratch) {
  float k = piece.k;
  float b = piece.b;
  if (isOutsideMiddleBand(end.bandRow, image.rows)) {
    const TLent<TStripePiece> refitted = fitPiece(std::move(end.pointsNearEnd), kPieceFitTolPx, scratch);
    if (!trace.holds(kRefit, refitted.isFitted)) return std::nullopt;
    k = refitted.k;
    b = refitted.b;
    reportRefit(end, refitted, trace);
  }
  return refineGroovePos(supportPts, cv::Point2f(end.roughPos), k, b, image, params.dPara2, params.dPara1,
                         scratch);
}

}  // namespace weld
