#include "stripe/ridge/ridge_response.h"

#include "support/kernels/kernels.h"

#include <algorithm>

namespace weld {

namespace {

constexpr double kFwhmPerSigma = 2.355;  // of a Gaussian profile
constexpr double kWidestFactor = 4.0;    // widest centre box over the FWHM at the largest sigma
constexpr int kMaxLevels = kMostRidgeScales - 1;
constexpr int kSideRows = 2;  // height of the boxes beside the ridge, rows of the level

TRidgeGrid makeGrid(int rows, int cols, std::pmr::memory_resource* memory) {
  const auto count = static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols);
  return {cols, TBuffer<short>(memory, count)};
}

// Fills the sums of a level from its rows; writeRow(y, target) gives row y.
template <typename TWriteRow>
void fillSums(TRidgeLevel& level, const TWriteRow& writeRow, std::pmr::memory_resource* memory) {
  const TRidgeRows& work = kernels().ridgeRows;
  level.sums = makeGrid(level.rows + 1, level.cols, memory);
  std::pmr::vector<short> before(static_cast<std::size_t>(level.cols), memory);
  std::pmr::vector<short> here(before, memory);
  writeRow(0, before.data());
  work.addRows(before.data(), before.data(), level.cols, level.sums[0]);
  for (int y = 1; y < level.rows; ++y) {
    writeRow(y, here.data());
    work.addRows(before.data(), here.data(), level.cols, level.sums[y]);
    before.swap(here);
  }
  work.addRows(before.data(), before.data(), level.cols, level.sums[level.rows]);
}

TRidgeLevel buildFinestLevel(const cv::Mat& grey, std::pmr::memory_resource* memory) {
  TRidgeLevel level{grey.rows, (grey.cols + 1) / 2, kRidgeColumnStep, 1, {}};
  const auto pairColumns = kernels().ridgeRows.pairColumns;
  fillSums(
      level, [&](int y, short* target) { pairColumns(grey.ptr<uchar>(y), grey.cols, target); }, memory);
  return level;
}

// Half the rows of a level, and with a step of two half its columns.
TRidgeLevel halve(const TRidgeLevel& fine, int columnStep, std::pmr::memory_resource* memory) {
  TRidgeLevel coarse{
      (fine.rows + 1) / 2, (fine.cols + columnStep - 1) / columnStep, fine.stepX * columnStep, fine.stepY * 2, {}};
  const auto halveSums = columnStep == 1 ? kernels().ridgeRows.halveSums : kernels().ridgeRows.halveSumsAndColumns;
  fillSums(
      coarse, [&](int y, short* target) { halveSums(fine.sumFrom(2 * y), fine.cols, target); }, memory);
  return coarse;
}

}  // namespace

std::pmr::vector<TRidgeLevel> buildRidgeLevels(const cv::Mat& grey, int count, std::pmr::memory_resource* memory) {
  std::pmr::vector<TRidgeLevel> levels(memory);
  levels.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    // The first step keeps the columns: a steep narrow stripe leaves wider columns too soon.
    if (i == 0) levels.push_back(buildFinestLevel(grey, memory));
    if (i == 1) levels.push_back(halve(levels.back(), 1, memory));
    if (i >= 2) levels.push_back(halve(levels.back(), 2, memory));
  }
  return levels;
}

std::pmr::vector<TRidgeScale> chooseRidgeScales(double maxSigmaPx, cv::Size imageSize,
                                                std::pmr::memory_resource* memory) {
  std::pmr::vector<TRidgeScale> scales({{0, 1, 2}}, memory);
  const double widestPx = kWidestFactor * kFwhmPerSigma * maxSigmaPx;
  for (int level = 0; level < kMaxLevels; ++level) {
    const int widthPx = 4 << level;
    // Written so that a NaN keeps the narrow scales only.
    if (!(widthPx <= widestPx) || widthPx > imageSize.height) break;
    scales.push_back({level, 2, widthPx});
  }
  return scales;
}

void computeRidgeRow(const TRidgeLevel& level, int halfRows, int y, short* response) {
  const short* const above = level.sumFrom(y - 2 * halfRows - kSideRows);
  const short* const upper = level.sumFrom(y - halfRows);
  const short* const lower = level.sumFrom(y + halfRows - 2);  // the same when the box is two rows high
  const short* const below = level.sumFrom(y + 2 * halfRows);
  kernels().ridgeRows.respond({above, upper, lower, below}, level.cols, response);
}

}  // namespace weld
