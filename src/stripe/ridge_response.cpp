#include "stripe/ridge_response.h"

#include "stripe/ridge_rows.h"

#include <algorithm>

namespace weld {

namespace {

constexpr double kFwhmPerSigma = 2.355;  // of a Gaussian profile
constexpr double kWidestFactor = 4.0;    // widest centre box over the FWHM at the largest sigma
constexpr int kMaxLevels = 8;
constexpr int kSideRows = 2;  // height of the boxes beside the ridge, rows of the level

TRidgeGrid makeGrid(int rows, int cols, std::pmr::memory_resource* memory) {
  const auto count = static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols);
  return {rows, cols, std::pmr::polymorphic_allocator<short>(memory).allocate(count)};
}

TRidgeLevel buildFinestLevel(const cv::Mat& grey, std::pmr::memory_resource* memory) {
  TRidgeLevel level;
  level.grey = makeGrid(grey.rows, (grey.cols + 1) / 2, memory);
  level.stepX = kRidgeColumnStep;
  const TRidgeRows& rows = chooseRidgeRows();
  for (int y = 0; y < grey.rows; ++y) rows.pairColumns(grey.ptr<uchar>(y), grey.cols, level.grey[y]);
  return level;
}

// Half the rows of a level, and with a step of two half its columns.
TRidgeLevel halve(const TRidgeLevel& fine, int columnStep, std::pmr::memory_resource* memory) {
  const int bottom = fine.grey.rows - 1;
  TRidgeLevel coarse;
  coarse.grey = makeGrid(bottom / 2 + 1, (fine.grey.cols + columnStep - 1) / columnStep, memory);
  coarse.stepX = fine.stepX * columnStep;
  coarse.stepY = fine.stepY * 2;
  const auto halveInto = columnStep == 1 ? chooseRidgeRows().halveRows : chooseRidgeRows().halveBoth;
  for (int y = 0; y < coarse.grey.rows; ++y) {
    halveInto(fine.grey[2 * y], fine.grey[std::min(2 * y + 1, bottom)], fine.grey.cols, coarse.grey[y]);
  }
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
  const TRidgeGrid& grey = level.grey;
  const auto row = [&](int index) { return grey[std::clamp(index, 0, grey.rows - 1)]; };
  const int above = y - 2 * halfRows - kSideRows;
  const int upper = y - halfRows;
  const int lower = y + halfRows - 2;  // the same rows as `upper` when the box is two rows high
  const int below = y + 2 * halfRows;
  chooseRidgeRows().respond({{row(above), row(above + 1)},
                             {row(upper), row(upper + 1)},
                             {row(lower), row(lower + 1)},
                             {row(below), row(below + 1)}},
                            grey.cols, response);
}

}  // namespace weld
