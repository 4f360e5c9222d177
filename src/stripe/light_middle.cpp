#include "stripe/light_middle.h"

#include "support/grey_image.h"
#include "support/line_math.h"

#include <cmath>
#include <cstddef>

namespace weld {

namespace {

constexpr int kReachRows = 28;         // of the stripe from its middle
constexpr double kHeightShare = 0.35;  // of the peak over the dark, that the stripe stands on
constexpr int kPeakRows = 2;           // about the line
constexpr int kDarkRows = 4;           // at the end of the reach
constexpr double kLeastHeight = 6.0;   // grey levels over that
constexpr double kMostOffPx = 2.5;     // of the middle of the light from its centre

// The rows of a column about a centre. As a template argument the number of channels is tested once.
template <int channels>
class TColumn {
public:
  TColumn(const cv::Mat& image, int x, int y)
      : middle(image.ptr(y) + static_cast<std::ptrdiff_t>(x) * channels),
        step(static_cast<std::ptrdiff_t>(image.step[0])) {}

  int at(int row) const { return greyOf(middle + row * step, channels); }

  // Row of the centroid of the stripe's upper part, from the centre. Not a number where that goes on to the end of
  // the reach, or is too little.
  double centroid() const {
    int peakRow = -kPeakRows;
    for (int row = -kPeakRows; row <= kPeakRows; ++row) {
      if (at(row) > at(peakRow)) peakRow = row;
    }
    const int peak = at(peakRow);
    const double dark = 0.5 * (darkOn(-1) + darkOn(1));
    const double foot = dark + kHeightShare * (peak - dark);
    if (peak - foot < kLeastHeight) return NAN;
    const int darkest = truncToInt(foot);
    TSide above;
    TSide below;
    if (!sumSide(-1, peakRow, darkest, above) || !sumSide(1, peakRow, darkest, below)) return NAN;
    const double light = above.light + peak + below.light - foot * (above.rows + 1 + below.rows);
    const double moment = below.moment - above.moment - foot * (below.rowSum() - above.rowSum());
    return peakRow + moment / light;
  }

private:
  // What lies on one side of the peak over the foot of the stripe.
  struct TSide {
    int rows = 0;
    int light = 0;
    int moment = 0;  // by the rows from the peak

    double rowSum() const { return 0.5 * rows * (rows + 1); }
  };

  // False where it goes on to the end of the reach.
  bool sumSide(int way, int peakRow, int darkest, TSide& side) const {
    const std::ptrdiff_t next = way * step;
    const unsigned char* pixel = middle + peakRow * step + next;
    const int most = kReachRows - way * peakRow;
    int rows = 0;
    int light = 0;
    int moment = 0;
    for (int level = greyOf(pixel, channels); level > darkest; level = greyOf(pixel, channels)) {
      ++rows;
      light += level;
      moment += level * rows;
      if (rows + 1 == most) return false;
      pixel += next;
    }
    side = {rows, light, moment};
    return true;
  }
  double darkOn(int way) const {
    int sum = 0;
    for (int row = kReachRows - kDarkRows; row < kReachRows; ++row) sum += at(way * row);
    return static_cast<double>(sum) / kDarkRows;
  }

  const unsigned char* middle;
  std::ptrdiff_t step;
};

}  // namespace

double lightMiddle(const cv::Mat& image, cv::Point2d centre) {
  const int x = roundToInt(centre.x);
  const int y = roundToInt(centre.y);
  if (x < 0 || x >= image.cols || y < kReachRows || y + kReachRows >= image.rows) return NAN;
  switch (image.channels()) {
    case 1:
      return y + TColumn<1>(image, x, y).centroid();
    case 3:
      return y + TColumn<3>(image, x, y).centroid();
    default:
      return y + TColumn<4>(image, x, y).centroid();
  }
}

TPoints onLight(const TFrame& frame, TPointView centres, std::size_t step) {
  const std::size_t looked = (centres.size() + step - 1) / step;
  TPoints light(frame.memory);
  light.reserve(centres.size());
  for (std::size_t i = 0; i < centres.size(); i += step) {
    const cv::Point2f p = centres[i];
    const auto row = static_cast<double>(p.y);
    const double middle = isFine(row) ? row : lightMiddle(frame.image, p);
    if (std::abs(middle - row) <= kMostOffPx) light.emplace_back(p.x, static_cast<float>(middle));
  }
  if (2 * light.size() <= looked) light.assign(centres.begin(), centres.end());
  return light;
}

}  // namespace weld
