// Sub-pixel measurement of the stripe in one column. Internal to the ridge extraction.
#pragma once

#include "stripe/ridge/ridge.h"

#include <opencv2/core.hpp>

#include <memory_resource>
#include <optional>
#include <utility>
#include <vector>

namespace weld {

// Where the path expects the stripe in a column.
struct TRidgeGuess {
  int x = 0;
  double y = 0.0;
  double widthPx = 0.0;
  double leastContrast = 0.0;  // grey levels
};

// Measures stripes on the raw grey levels; keeps its working memory from column to column.
class TRidgeRefiner {
public:
  TRidgeRefiner(const cv::Mat& grey, std::pmr::memory_resource* memory) : image(grey), sums(memory) {}

  // The stripe near the guess: half-height extent, contrast over the brighter side, and centre. None when the
  // contrast is too low. Confidence is left at 0.
  std::optional<TRidgePoint> refine(const TRidgeGuess& guess);

private:
  struct TExtent {
    double middle = 0.0;    // half way between the edges, px
    double fwhm = 0.0;      // px
    double contrast = 0.0;  // over the brighter side
    double back = 0.0;      // mean of both sides
  };
  struct TPeak {
    int row = 0;
    double level = 0.0;
  };

  void load(int x, int first, int last);
  int sumOf(int first, int last) const;
  double mean(int first, int last) const;
  TPeak findPeak(int middle, int reach, int smoothRows) const;
  double findHalfHeight(const TPeak& peak, double back, int step, int limit, int smoothRows) const;
  std::pair<double, double> measureBackground(int middle, int near, int far) const;
  TExtent measureExtent(int x, double y, double widthPx);
  double correlatePosition(double start, double back, double halfSupport) const;

  const cv::Mat& image;
  std::pmr::vector<int>
      sums;  // running sums of a column from firstRow on; rows outside the image repeat its border
  int firstRow = 0;
};

}  // namespace weld
