// Response of the image columns to a bright stripe, over scales. Internal to the ridge extraction.
#pragma once

#include "support/arena.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <memory_resource>
#include <vector>

namespace weld {

// Responses and thresholds are grey levels times this.
inline constexpr int kRidgeUnit = 32;

inline constexpr int kMostRidgeScales = 9;

// Image columns that share one set of candidates.
inline constexpr int kRidgeColumnStep = 2;

// Rows of values.
struct TRidgeGrid {
  int cols = 0;
  TBuffer<short> values;

  short* operator[](int y) const { return values.data() + static_cast<std::ptrdiff_t>(y) * cols; }
};

// The image averaged over stepX columns and stepY rows, kept as the sums of every two neighbouring rows; values
// are grey levels times 16. Rows beyond the image repeat its border.
struct TRidgeLevel {
  int rows = 0;
  int cols = 0;
  int stepX = 1;
  int stepY = 1;
  TRidgeGrid sums;  // of the rows -1 and 0, then 0 and 1, ...

  const short* sumFrom(int y) const { return sums[std::clamp(y, -1, rows - 1) + 1]; }
};

// One width of stripe that is searched for, in one level.
struct TRidgeScale {
  int level = 0;
  int halfRows = 1;  // half height of the centre box, rows of the level
  int widthPx = 2;   // height of the centre box in the image
};

// The averaged images that the scales need, finest first.
std::pmr::vector<TRidgeLevel> buildRidgeLevels(const cv::Mat& grey, int count, std::pmr::memory_resource* memory);

// The scales for stripes up to maxSigmaPx and for plateaus and blur beyond it, narrow to wide.
std::pmr::vector<TRidgeScale> chooseRidgeScales(double maxSigmaPx, cv::Size imageSize,
                                                std::pmr::memory_resource* memory);

// Response of every column in row y: mean of the centre box less the brighter one of the two boxes beside
// it. The ridge lies half a row above y. Rows beyond the image repeat its border.
void computeRidgeRow(const TRidgeLevel& level, int halfRows, int y, short* response);

}  // namespace weld
