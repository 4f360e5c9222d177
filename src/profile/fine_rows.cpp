#include "profile/fine_rows.h"

#include "profile/fine_fillets.h"
#include "stripe/light_middle.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace weld {

namespace {

constexpr std::size_t kMostColumns = 64;  // of an element
constexpr std::size_t kFewestColumns = 12;
constexpr double kPlateWindowPx = 260.0;
constexpr double kCornerPx = 6.0;  // columns beside a corner, where the light is rounded
constexpr double kOwnPx = 2.0;     // of a centre from its element
constexpr double kLikePx = 1.0;    // of a row from the median
constexpr double kAlike = 1.5;     // neighbours that scatter as one
constexpr double kMostMovePx = 1.5;
constexpr double kSteepest = 0.02;  // cosine of a line's angle

// By which an element lies lower: rows at a column, and rows a column.
struct TMove {
  double x = 0.0;
  double rows = 0.0;
  double slope = 0.0;
  double variance = std::numeric_limits<double>::infinity();  // of the rows

  double at(double column) const { return rows + slope * (column - x); }
};

// What stands out of its own scatter.
double certain(double value, double variance) {
  return value * std::max(0.0, 1.0 - variance / std::max(value * value, 1e-18));
}

// By which the light lies lower, column by column.
class TOffsets {
public:
  bool isFull() const { return count == kMostColumns; }
  void add(double column, double row) {
    columns[count] = column;
    rows[count++] = row;
  }

  // The line through those like their median.
  TMove move() const {
    if (count < kFewestColumns) return {};
    const double median = medianRow();
    double n = 0.0, x = 0.0, y = 0.0, xx = 0.0, xy = 0.0, yy = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
      if (std::abs(rows[i] - median) > kLikePx) continue;
      const double column = columns[i] - columns[0];
      n += 1.0;
      x += column;
      y += rows[i];
      xx += column * column;
      xy += column * rows[i];
      yy += rows[i] * rows[i];
    }
    const double mean = y / n;
    if (!(std::abs(mean) <= kMostMovePx)) return {};
    const double spread = std::max(xx - x * x / n, 1e-12);
    const double slope = (xy - x * y / n) / spread;
    const double scatter = kAlike * std::max(yy / n - mean * mean - slope * slope * spread / n, 0.0);
    return {columns[0] + x / n, certain(mean, scatter / n), certain(slope, scatter / spread), scatter / n};
  }

private:
  double medianRow() const {
    std::array<double, kMostColumns> sorted = rows;
    double* const middle = sorted.data() + count / 2;
    std::nth_element(sorted.data(), middle, sorted.data() + count);
    return *middle;
  }

  std::array<double, kMostColumns> columns{};
  std::array<double, kMostColumns> rows{};
  std::size_t count = 0;
};

class TFineRows {
public:
  TFineRows(const TFrame& f, const TOrientedCentres& c, const TProfileLayout& l)
      : frame(f), centres(c), layout(l) {}

  // Rows in the sense of the layout; 0: the light does not tell. A flat is short, and whole rows hide how it is
  // tilted: where the light follows its line more closely than its centres, the line counts.
  TMove moveOf(std::size_t e) const {
    const TFittedElement& element = layout.elements[e];
    const TSurface surface(element, layout.range(e));
    const bool isFlat = layout.range(e).role == TElementRole::flat;
    const TSpan span = columnsOf(e);
    const int step = 1 + span.count() / static_cast<int>(kMostColumns);
    TOffsets fromCentres;
    TOffsets fromLine;
    for (int i = span.first; i < span.last && !fromCentres.isFull(); i += step) {
      const cv::Point2d p = centres.at(i);
      if (isFine(p.y) || !(std::abs(surface.offsetOf(p)) <= kOwnPx)) continue;
      const double row = layout.sense * lightMiddle(frame.image, {p.x, layout.sense * p.y});
      if (!(std::abs(row - p.y) <= kMostMovePx + kLikePx)) continue;
      fromCentres.add(p.x, row - p.y);
      if (isFlat) fromLine.add(p.x, row - rowOn(element.lines.whole, p.x));
    }
    const TMove byCentres = fromCentres.move();
    const TMove byLine = fromLine.move();
    return byLine.variance < byCentres.variance ? byLine : byCentres;
  }

private:
  static double rowOn(const TLine& line, double x) {
    return line.y + (x - line.x) * line.dy / std::max(line.dx, kSteepest);
  }

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

  const TFrame& frame;
  const TOrientedCentres& centres;
  const TProfileLayout& layout;
};

void turn(TLine& line, double slope) {
  const double dy = line.dy + slope * line.dx;
  const double length = std::sqrt(line.dx * line.dx + dy * dy);
  if (!(length > 0.0)) return;
  line.dx /= length;
  line.dy = dy / length;
}

void moveDown(const TMove& by, TFittedElement& element) {
  for (TLine* line : {&element.lines.left, &element.lines.right, &element.lines.whole}) {
    line->y += by.at(line->x);
    turn(*line, by.slope);
  }
  element.arc.circle.y += by.rows;
  element.left.y += by.at(element.left.x);
  element.right.y += by.at(element.right.x);
}

}  // namespace

void moveToLight(const TFrame& frame, const TOrientedCentres& centres, TProfileLayout& layout) {
  const TFineRows fine(frame, centres, layout);
  std::array<TMove, kMostElements> moves{};
  for (std::size_t e = 0; e < layout.count(); ++e) moves[e] = fine.moveOf(e);
  for (std::size_t e = 0; e < layout.count(); ++e) moveDown(moves[e], layout.elements[e]);
  for (std::size_t j = 0; j + 1 < layout.count(); ++j) {
    if (layout.fillets[j].isFound) roundAnew(frame, centres, j, layout);
  }
}

}  // namespace weld
