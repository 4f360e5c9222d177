#include "stripe/ridge/ridge_smooth.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace weld {

namespace {

constexpr std::size_t kBlock = 32;            // points that share one estimate of scatter
constexpr int kMinDifferences = 5;            // fewer tell no scatter
constexpr double kSigmaPerMedian = 1.21;      // of a centre, over the median size of its second difference / 2
constexpr double kMostShift = 2.5;            // largest correction, sigmas of scatter
constexpr double kHalfConfidenceGrey = 20.0;  // contrast of confidence 0.5 without scatter
constexpr double kHalfConfidencePx = 2.0;     // scatter that halves the confidence

// Neighbours on either side that are there and on the same stretch of columns.
int freeReach(const TRidgePoints& points, std::size_t i) {
  int reach = 0;
  while (reach < kRidgeSmoothing) {
    const std::size_t next = static_cast<std::size_t>(reach) + 1;
    if (next > i || i + next >= points.size()) break;
    if (points[i + next].point.x - points[i - next].point.x != static_cast<float>(2 * next)) break;
    ++reach;
  }
  return reach;
}

double midOfNeighbours(const TRidgePoints& points, std::size_t i) {
  return (static_cast<double>(points[i - 1].point.y) + static_cast<double>(points[i + 1].point.y)) / 2;
}

// Sigma of the centres' scatter around a smooth stripe, px: from second differences, by their median.
double measureScatter(const TRidgePoints& points, std::size_t first, std::size_t last) {
  std::array<double, kBlock> differences{};
  int count = 0;
  for (std::size_t i = first; i < last; ++i) {
    if (freeReach(points, i) == 0) continue;
    differences[static_cast<std::size_t>(count++)] =
        std::abs(static_cast<double>(points[i].point.y) - midOfNeighbours(points, i));
  }
  if (count < kMinDifferences) return 0.0;
  const auto middle = differences.begin() + count / 2;
  std::nth_element(differences.begin(), middle, differences.begin() + count);
  return *middle * kSigmaPerMedian;
}

double meanAround(const TRidgePoints& points, std::size_t i, int reach) {
  double sum = 0.0;
  for (std::size_t k = i - static_cast<std::size_t>(reach); k <= i + static_cast<std::size_t>(reach); ++k) {
    sum += static_cast<double>(points[k].point.y);
  }
  return sum / (2 * reach + 1);
}

}  // namespace

void smoothRidge(TRidgePoints& points, TMemory* memory) {
  const TRidgePoints raw(points.begin(), points.end(), memory);
  for (std::size_t first = 0; first < raw.size(); first += kBlock) {
    const std::size_t last = std::min(first + kBlock, raw.size());
    const double scatterPx = measureScatter(raw, first, last);
    for (std::size_t i = first; i < last; ++i) {
      const double own = static_cast<double>(raw[i].point.y);
      const double mean = meanAround(raw, i, freeReach(raw, i));
      if (std::abs(mean - own) <= kMostShift * scatterPx) points[i].point.y = static_cast<float>(mean);
      const double contrast = static_cast<double>(raw[i].contrast);
      const double share = scatterPx / kHalfConfidencePx;
      points[i].confidence =
          static_cast<float>(contrast / (contrast + kHalfConfidenceGrey) / (1.0 + share * share));
    }
  }
}

}  // namespace weld
