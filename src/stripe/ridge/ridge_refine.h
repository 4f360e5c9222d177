// Sub-pixel measurement of the stripe in one column. Internal to the ridge extraction.
#pragma once

#include "stripe/ridge/ridge.h"
#include "support/kernels/ridge_rows.h"

#include <opencv2/core.hpp>

#include <array>
#include <memory_resource>
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

// Measures stripes on the raw grey levels, a few columns at a time; keeps its working memory from column to
// column.
class TRidgeRefiner {
public:
  // What it measures goes to the end of `measured`.
  TRidgeRefiner(const cv::Mat& grey, TRidgePoints& measured);

  // The stripe near the guess: half-height extent, contrast over the brighter side, and centre. None when the
  // contrast is too low. Confidence is left at 0.
  void refine(const TRidgeGuess& guess);
  // Measures the last columns.
  void finish();

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
  using TSums = std::pmr::vector<int>;

  TSums& sums() { return sumsOf[static_cast<std::size_t>(waiting)]; }
  const TSums& sums() const { return sumsOf[static_cast<std::size_t>(waiting)]; }
  void load(int x, int first, int last);
  int sumOf(int first, int last) const;
  double mean(int first, int last) const;
  TPeak findPeak(int middle, int reach, int smoothRows) const;
  double findHalfHeight(const TPeak& peak, double back, int step, int limit, int smoothRows) const;
  std::pair<double, double> measureBackground(int middle, int near, int far) const;
  TExtent measureExtent(int x, double y, double widthPx);
  void await(const TRidgeGuess& guess, const TExtent& extent);

  const cv::Mat& image;
  TRidgePoints& points;
  std::array<TSums, kCorrelated>
      sumsOf;        // running sums of a column each; rows outside the image repeat its border
  int firstRow = 0;  // of the column at hand
  int waiting = 0;   // columns whose centres are still to be found
  std::array<TRidgePoint, kCorrelated> found;
  TRidgeProfiles profiles;
};

}  // namespace weld
