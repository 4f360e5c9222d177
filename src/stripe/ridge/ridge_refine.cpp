#include "stripe/ridge/ridge_refine.h"

#include "support/kernels/kernels.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kTrustedWidth = 1.2;  // wider than this over the guess, the stripe is measured again
constexpr double kMostWidening = 3.0;
constexpr std::size_t kUsualRows = 768;  // of a column that is read
constexpr int kMinPeakReachPx = 2;       // search for the peak: half the width, at least this, either way
constexpr int kMinBackDistancePx = 3;    // the background begins a width off the centre, at least this
constexpr double kWalkWidths = 1.5;      // an edge is sought so many widths off the peak
constexpr int kSmoothingShare = 8;       // wide profiles are read as means over +- this part of the width
constexpr double kKernelPerFwhm = 1.27;  // half support of the kernel, so that its sigma is the stripe's own
constexpr double kMinKernelPx = 2.5;
constexpr int kKernelBins = 8;  // rows of wide profiles are read in bins, so many to the half support

}  // namespace

TRidgeRefiner::TRidgeRefiner(const cv::Mat& grey, TRidgePoints& measured)
    : image(grey),
      points(measured),
      sumsOf{{TSums(points.get_allocator()), TSums(points.get_allocator()), TSums(points.get_allocator()),
              TSums(points.get_allocator())}} {
  // Lists that grew in turn would leave holes in the memory of a frame.
  for (TSums& one : sumsOf) one.reserve(kUsualRows);
}

void TRidgeRefiner::load(int x, int first, int last) {
  firstRow = first;
  sums().resize(static_cast<std::size_t>(last - first + 2));
  const int bottom = image.rows - 1;
  const uchar* const column = image.ptr<uchar>(0) + x;
  const std::size_t step = image.step[0];
  int sum = 0;
  int* next = sums().data();
  *next++ = sum;
  const auto add = [&](int row) {
    sum += column[step * static_cast<std::size_t>(row)];
    *next++ = sum;
  };
  int y = first;
  for (; y < 0 && y <= last; ++y) add(0);
  for (; y <= std::min(last, bottom); ++y) add(y);
  for (; y <= last; ++y) add(bottom);
}

int TRidgeRefiner::sumOf(int first, int last) const {
  const TSums& rows = sums();
  return rows[static_cast<std::size_t>(last - firstRow + 1)] - rows[static_cast<std::size_t>(first - firstRow)];
}

double TRidgeRefiner::mean(int first, int last) const {
  return static_cast<double>(sumOf(first, last)) / (last - first + 1);
}

TRidgeRefiner::TPeak TRidgeRefiner::findPeak(int middle, int reach, int smoothRows) const {
  TPeak peak{middle, mean(middle - smoothRows, middle + smoothRows)};
  // Outwards, so that of equal rows the one nearest to the middle wins.
  for (int i = 1; i <= reach; ++i) {
    for (const int y : {middle - i, middle + i}) {
      const double level = mean(y - smoothRows, y + smoothRows);
      if (level > peak.level) peak = {y, level};
    }
  }
  return peak;
}

// Row where the profile falls to half its height, walking from the peak in direction `step`.
double TRidgeRefiner::findHalfHeight(const TPeak& peak, double back, int step, int limit, int smoothRows) const {
  const double half = (peak.level + back) / 2;
  double inner = peak.level;
  for (int i = 1; i <= limit; ++i) {
    const int y = peak.row + i * step;
    const double level = mean(y - smoothRows, y + smoothRows);
    if (level < half) return y - step * (half - level) / (inner - level);
    inner = level;
  }
  return peak.row + limit * step;
}

// Mean grey levels above and below the stripe, `near` to `far` rows off its middle. A side beyond the image's
// border is taken to be like the other one.
std::pair<double, double> TRidgeRefiner::measureBackground(int middle, int near, int far) const {
  const int bottom = image.rows - 1;
  const bool hasAbove = middle - near >= 0;
  const bool hasBelow = middle + near <= bottom;
  const double above = hasAbove ? mean(std::max(middle - far, 0), middle - near) : 0.0;
  const double below = hasBelow ? mean(middle + near, std::min(middle + far, bottom)) : 0.0;
  return {hasAbove ? above : below, hasBelow ? below : above};
}

TRidgeRefiner::TExtent TRidgeRefiner::measureExtent(int x, double y, double widthPx) {
  const int middle = static_cast<int>(std::floor(y + 0.5));
  const int smoothRows = static_cast<int>(widthPx) / kSmoothingShare;
  const int reach = std::max(kMinPeakReachPx, static_cast<int>(widthPx / 2));
  const int limit = static_cast<int>(kWalkWidths * widthPx) + kMinBackDistancePx;
  const int near = std::max(kMinBackDistancePx, static_cast<int>(widthPx));
  const int far = near + std::max(1, static_cast<int>(widthPx / 2));
  const int extent = std::max(far, reach + limit + smoothRows);
  load(x, middle - extent, middle + extent);

  const TPeak peak = findPeak(middle, reach, smoothRows);
  const auto [above, below] = measureBackground(middle, near, far);
  const double top = findHalfHeight(peak, above, -1, limit, smoothRows);
  const double bottom = findHalfHeight(peak, below, 1, limit, smoothRows);
  return {(top + bottom) / 2, bottom - top, peak.level - std::max(above, below), (above + below) / 2};
}

void TRidgeRefiner::refine(const TRidgeGuess& guess) {
  TExtent extent = measureExtent(guess.x, guess.y, guess.widthPx);
  // Much wider than the guess, the background was read on the stripe's own shoulders.
  if (extent.fwhm > kTrustedWidth * guess.widthPx) {
    extent = measureExtent(guess.x, extent.middle, std::min(extent.fwhm, kMostWidening * guess.widthPx));
  }
  const double top = extent.middle - extent.fwhm / 2;
  const double bottom = extent.middle + extent.fwhm / 2;
  if (!(top >= 0.0 && bottom <= image.rows - 1) || extent.fwhm <= 0.0) return;  // cut off by the image's border
  if (!(extent.contrast >= guess.leastContrast)) return;
  await(guess, extent);
}

void TRidgeRefiner::await(const TRidgeGuess& guess, const TExtent& extent) {
  // The kernel keeps off the border's repeated rows.
  const double inside = std::min(extent.middle, image.rows - 1 - extent.middle) + 0.5;
  const double support = std::min(std::max(kMinKernelPx, kKernelPerFwhm * extent.fwhm), inside);
  const auto lane = static_cast<std::size_t>(waiting);
  profiles.sums[lane] = sums().data();
  profiles.firstRow[lane] = firstRow;
  profiles.lastRow[lane] = firstRow + static_cast<int>(sums().size()) - 2;
  profiles.binRows[lane] = std::max(1, static_cast<int>(support) / kKernelBins);
  profiles.start[lane] = extent.middle;
  profiles.back[lane] = extent.back;
  profiles.halfSupport[lane] = support;
  found[lane].point.x = static_cast<float>(guess.x);
  found[lane].widthPx = static_cast<float>(extent.fwhm);
  found[lane].contrast = static_cast<float>(extent.contrast);
  if (++waiting == kCorrelated) finish();
}

void TRidgeRefiner::finish() {
  for (int lane = waiting; lane < kCorrelated; ++lane) {
    profiles.binRows[lane] = 0;
    profiles.halfSupport[lane] = 1.0;
  }
  double centres[kCorrelated];
  kernels().ridgeRows.correlate(profiles, centres);
  for (int lane = 0; lane < waiting; ++lane) {
    if (!(centres[lane] >= 0.0 && centres[lane] <= image.rows - 1)) continue;
    TRidgePoint& ridge = found[static_cast<std::size_t>(lane)];
    ridge.point.y = static_cast<float>(centres[lane]);
    points.push_back(ridge);
  }
  waiting = 0;
}

}  // namespace weld
