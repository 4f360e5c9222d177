#include "stripe/ridge.h"

#include "stripe/ridge_candidates.h"
#include "stripe/ridge_path.h"
#include "stripe/ridge_refine.h"
#include "stripe/ridge_response.h"

#include <algorithm>

namespace weld {

namespace {

// Expected stripe between two nodes of a piece, at image column x.
TRidgeGuess interpolate(const TRidgeNode& left, const TRidgeNode& right, int x) {
  const double from = left.column * kRidgeColumnStep + 0.5;
  const double to = right.column * kRidgeColumnStep + 0.5;
  const double share = to > from ? std::clamp((x - from) / (to - from), 0.0, 1.0) : 0.0;
  const double y = (left.candidate.y + (right.candidate.y - left.candidate.y) * share) / 2;
  return {x, y, static_cast<double>(share < 0.5 ? left.candidate.widthPx : right.candidate.widthPx)};
}

void refinePiece(const cv::Mat& grey, const TRidgePiece& piece, std::vector<TRidgePoint>& points) {
  std::size_t right = 0;
  const int last = std::min(piece.back().column * kRidgeColumnStep + 1, grey.cols - 1);
  for (int x = piece.front().column * kRidgeColumnStep; x <= last; ++x) {
    while (right + 1 < piece.size() && piece[right].column * kRidgeColumnStep < x) ++right;
    const TRidgeNode& left = piece[right == 0 ? 0 : right - 1];
    const TRidgeGuess guess = interpolate(left, piece[right], x);
    const auto point = refineRidgePoint(grey, guess, 8.0);
    if (point) points.push_back(*point);
  }
}

}  // namespace

std::vector<TRidgePoint> extractRidgeCentres(const cv::Mat& grey, double maxSigmaPx, double minContrast) {
  if (grey.empty()) return {};
  CV_Assert(grey.type() == CV_8UC1);
  const auto scales = chooseRidgeScales(maxSigmaPx, grey.size());
  const auto levels = buildRidgeLevels(grey, scales.back().level + 1);
  const auto candidates = findRidgeCandidates(levels, scales, minContrast);
  const auto path = findRidgePath(candidates);
  std::vector<TRidgePoint> points;
  points.reserve(static_cast<std::size_t>(grey.cols));
  for (const TRidgePiece& piece : path) refinePiece(grey, piece, points);
  return points;
}

}  // namespace weld
