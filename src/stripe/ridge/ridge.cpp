#include "stripe/ridge/ridge.h"

#include "stripe/ridge/ridge_candidates.h"
#include "stripe/ridge/ridge_path.h"
#include "stripe/ridge/ridge_refine.h"
#include "stripe/ridge/ridge_response.h"
#include "stripe/ridge/ridge_smooth.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

// Working memory: the averaged images; thresholds, candidates and paths of the columns; lists that grow.
constexpr std::size_t kBytesPerPixel = 2;
constexpr std::size_t kBytesPerColumn = 1024;
constexpr std::size_t kBytesBesides = 65536;

constexpr double kKnownPx = 3.0;        // from known centres, or half of the stripe's width
constexpr double kKeptContrast = 0.35;  // least contrast of a single column over that of its candidates

// Expected stripe at image column x, between two nodes of a piece.
TRidgeGuess interpolate(const TRidgeNode& left, const TRidgeNode& right, int x) {
  const double from = left.column * kRidgeColumnStep + 0.5;
  const double to = right.column * kRidgeColumnStep + 0.5;
  const double share = to > from ? std::clamp((x - from) / (to - from), 0.0, 1.0) : 0.0;
  const TRidgeCandidate& nearer = share < 0.5 ? left.candidate : right.candidate;
  TRidgeGuess guess;
  guess.x = x;
  guess.y = (left.candidate.y + (right.candidate.y - left.candidate.y) * share) / 2;
  guess.widthPx = nearer.widthPx;
  const int leastResponse = nearer.contrast - nearer.excess;
  guess.leastContrast = std::max<double>(kKeptContrast * nearer.contrast, leastResponse) / kRidgeUnit;
  return guess;
}

// The column and those that it is smoothed with.
bool runsAlong(TKnownRows known, const TRidgeGuess& guess) {
  const int last = static_cast<int>(known.size()) - 1;
  const double tolerancePx = std::max(kKnownPx, 0.5 * guess.widthPx);
  for (int x = std::max(guess.x - kRidgeSmoothing, 0); x <= std::min(guess.x + kRidgeSmoothing, last); ++x) {
    const auto row = static_cast<double>(known[static_cast<std::size_t>(x)]);
    if (!(std::abs(row - guess.y) <= tolerancePx)) return false;
  }
  return last >= 0;
}

void refinePiece(const TRidgePiece& piece, int imageColumns, TKnownRows known, TRidgeRefiner& refiner) {
  std::size_t right = 0;
  const int last = std::min(piece.back().column * kRidgeColumnStep + 1, imageColumns - 1);
  for (int x = piece.front().column * kRidgeColumnStep; x <= last; ++x) {
    while (right + 1 < piece.size() && piece[right].column * kRidgeColumnStep < x) ++right;
    const TRidgeNode& left = piece[right == 0 ? 0 : right - 1];
    const TRidgeGuess guess = interpolate(left, piece[right], x);
    if (!runsAlong(known, guess)) refiner.refine(guess);
  }
}

void refinePath(const cv::Mat& grey, const std::pmr::vector<TRidgePiece>& path, TKnownRows known,
                TRidgePoints& points) {
  TRidgeRefiner refiner(grey, points);
  for (const TRidgePiece& piece : path) refinePiece(piece, grey.cols, known, refiner);
  refiner.finish();
}

}  // namespace

std::size_t ridgeBytes(cv::Size frame) {
  const auto columns = static_cast<std::size_t>(frame.width);
  return columns * static_cast<std::size_t>(frame.height) * kBytesPerPixel + columns * kBytesPerColumn +
         kBytesBesides;
}

TRidgePoints extractRidgeCentres(const cv::Mat& grey, const TRidgeSettings& settings, TMemory* memory) {
  TRidgePoints points(memory);
  extractRidgeCentres(grey, settings, {}, points);
  return points;
}

void extractRidgeCentres(const cv::Mat& grey, const TRidgeSettings& settings, TKnownRows known,
                         TRidgePoints& points) {
  points.clear();
  if (grey.empty()) return;
  TMemory* const memory = points.get_allocator().resource();
  CV_Assert(grey.type() == CV_8UC1);
  points.reserve(static_cast<std::size_t>(grey.cols));
  const auto scales = chooseRidgeScales(settings.maxSigmaPx, grey.size(), memory);
  const auto levels = buildRidgeLevels(grey, scales.back().level + 1, memory);
  const auto candidates = findRidgeCandidates(levels, scales, settings.minContrast, memory);
  const auto path = findRidgePath(candidates, memory);
  refinePath(grey, path, known, points);
  smoothRidge(points, memory);
}

}  // namespace weld
