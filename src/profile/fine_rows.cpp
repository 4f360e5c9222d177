#include "profile/fine_rows.h"

#include "stripe/light_middle.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace weld {

namespace {

constexpr int kMostColumns = 64;  // of an element
constexpr int kFewestColumns = 12;
constexpr double kPlateWindowPx = 260.0;
constexpr double kCornerPx = 6.0;  // columns beside a corner, where the light is rounded
constexpr double kOwnPx = 2.0;     // of a centre from its element
constexpr double kLikePx = 1.0;    // of a row from the median
constexpr double kAlike = 1.5;     // neighbours that scatter as one
constexpr double kMostMovePx = 1.5;

class TFineRows {
public:
  TFineRows(const TFrame& f, const TOrientedCentres& c, const TProfileLayout& l)
      : frame(f), centres(c), layout(l) {}

  // By which the light lies below an element's centres, rows in the sense of the layout; 0: it is not told.
  double offsetOf(std::size_t e) const {
    const TFittedElement& element = layout.elements[e];
    const TSurface surface(element, layout.range(e));
    const TSpan span = columnsOf(e);
    const int step = 1 + span.count() / kMostColumns;
    TOffsets offsets;
    for (int i = span.first; i < span.last && offsets.count < offsets.rows.size(); i += step) {
      const cv::Point2d p = centres.at(i);
      if (isFine(p.y) || !(std::abs(surface.offsetOf(p)) <= kOwnPx)) continue;
      const double off = layout.sense * lightMiddle(frame.image, {p.x, layout.sense * p.y}) - p.y;
      if (std::abs(off) <= kMostMovePx + kLikePx) offsets.rows[offsets.count++] = off;
    }
    return meanOf(offsets);
  }

private:
  struct TOffsets {
    std::array<double, kMostColumns> rows{};
    std::size_t count = 0;
  };

  // Next to the corner of a plate, and clear of all corners.
  TSpan columnsOf(std::size_t e) const {
    const TFittedElement& element = layout.elements[e];
    const bool isPlate = layout.range(e).role == TElementRole::plate;
    double from = element.left.x + kCornerPx;
    double to = element.right.x - kCornerPx;
    if (isPlate && e == 0) from = std::max(from, to - kPlateWindowPx);
    if (isPlate && e > 0) to = std::min(to, from + kPlateWindowPx);
    return {centres.indexOf(from), centres.indexOf(to)};
  }

  // Of those like their median.
  static double meanOf(TOffsets& offsets) {
    if (offsets.count < kFewestColumns) return 0.0;
    double* const values = offsets.rows.data();
    double* const middle = values + offsets.count / 2;
    std::nth_element(values, middle, values + offsets.count);
    const double median = *middle;
    double sum = 0.0;
    double squares = 0.0;
    double n = 0.0;
    for (std::size_t i = 0; i < offsets.count; ++i) {
      if (std::abs(values[i] - median) > kLikePx) continue;
      sum += values[i];
      squares += values[i] * values[i];
      n += 1.0;
    }
    const double mean = sum / n;
    if (!(std::abs(mean) <= kMostMovePx)) return 0.0;
    const double variance = kAlike * std::max(squares / n - mean * mean, 0.0) / n;
    return mean * std::max(0.0, 1.0 - variance / std::max(mean * mean, 1e-12));
  }

  const TFrame& frame;
  const TOrientedCentres& centres;
  const TProfileLayout& layout;
};

void moveDown(double rows, TFittedElement& element) {
  for (TLine* line : {&element.lines.left, &element.lines.right, &element.lines.whole}) line->y += rows;
  element.arc.circle.y += rows;
  element.left.y += rows;
  element.right.y += rows;
}

}  // namespace

void moveToLight(const TFrame& frame, const TOrientedCentres& centres, TProfileLayout& layout) {
  const TFineRows fine(frame, centres, layout);
  std::array<double, kMostElements> rows{};
  for (std::size_t e = 0; e < layout.count(); ++e) rows[e] = fine.offsetOf(e);
  for (std::size_t e = 0; e < layout.count(); ++e) moveDown(rows[e], layout.elements[e]);
  for (std::size_t j = 0; j + 1 < layout.count(); ++j) layout.fillets[j].circle.y += 0.5 * (rows[j] + rows[j + 1]);
}

}  // namespace weld
