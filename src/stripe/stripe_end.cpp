#include "stripe/stripe_end.h"

#include "stripe/light_middle.h"
#include "stripe/stripe_curve.h"
#include "support/grey_image.h"
#include "support/median.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace weld {

namespace {

constexpr std::size_t kLineCentres = 300;
constexpr std::size_t kManyCentres = 100;  // from these on every third tells as much: neighbours scatter as one

constexpr std::size_t kInside = 24;   // centres before them tell the brightness of the piece
constexpr int kFarthestInside = 114;  // columns
constexpr double kLeastHalfPx = 2.0;  // rows of a column's light on either side of the line
constexpr double kMostHalfPx = 12.0;
constexpr int kClearPx =
    3;  // from these to the surroundings: the darkest rows as far again, for flare widens a stripe
constexpr int kAroundRows = 4;
constexpr double kLeastLight = 4.0;  // mean grey level of a column over its surroundings
constexpr double kFullShare = 0.5;   // of the light inside: what is lit
constexpr int kLongestHole = 30;     // dark columns in a row that a rest of the piece may lie behind ...
constexpr int kLongestBeside = 2;    // ... and beside another piece
constexpr double kLeastSure = 0.7;   // the same where all of the piece is equally bright
constexpr double kSharpShare = 0.5;
constexpr double kDarkWeight = 0.6;     // of a dark column against a lit one: a rest behind a hole is stripe, too
constexpr double kMostLoss = 3.0;       // of dark columns in a row: a rest of four lit ones outweighs any hole
constexpr double kUsualScatters = 2.5;  // speckle

TPointView centresNear(const TEndOfPiece& end) {
  const std::size_t count = std::min(end.piece.size(), kLineCentres);
  return end.piece.part(end.isRight ? end.piece.size() - count : 0, count);
}

// Of the last centre: smoothing moves it off the middle of its column.
int lastColumn(const TEndOfPiece& end) {
  return roundToInt(static_cast<double>(end.isRight ? end.piece.back().x : end.piece.front().x));
}

// The columns before its edge in which the piece is seen: holes do not tell how bright it is.
TList<int> columnsInside(const TFrame& frame, const TEndOfPiece& end) {
  TList<int> columns(frame.memory);
  const int last = lastColumn(end);
  for (std::size_t i = 0; i < end.piece.size() && columns.size() < kInside; ++i) {
    const cv::Point2f centre = end.isRight ? *(end.piece.end() - 1 - i) : end.piece[i];
    const int x = roundToInt(static_cast<double>(centre.x));
    if (std::abs(x - last) > end.edgePx + kFarthestInside) break;
    if (std::abs(x - last) > end.edgePx) columns.push_back(x);
  }
  return columns;
}

// How much light the columns have on the line of a piece.
class TLightOfColumns {
public:
  TLightOfColumns(const TFrame& frame, const TEndOfPiece& end, const TSlopeLine& along)
      : line(along), half(roundToInt(std::clamp(0.5 * end.widthPx, kLeastHalfPx, kMostHalfPx))) {
    const int middle = lastColumn(end);
    const int reach = end.edgePx + kFarthestInside + end.reachPx;
    const double rise = std::abs(line.k) * reach;
    const cv::Rect about(middle - reach, roundToInt(line.k * middle + line.b - rise) - far(), 2 * reach + 1,
                         roundToInt(2.0 * rise) + 2 * far() + 1);
    part = about & cv::Rect({0, 0}, frame.image.size());
    if (part.empty()) return;
    const cv::Mat seen = frame.image(part);
    pixels = TBuffer<unsigned char>(frame.memory, greyBytes(seen));
    grey = toGrey(seen, pixels);
  }

  // Over its surroundings; 0 outside the image.
  double at(int column) const {
    const int x = column - part.x;
    if (x < 0 || x >= grey.cols) return 0.0;
    const int row = roundToInt(line.k * column + line.b) - part.y;
    int around = std::numeric_limits<int>::max();
    for (int d = half + kClearPx; d + kAroundRows <= far() + 1; d += kAroundRows)
      around = std::min(
          {around, sumOf(x, row - d - kAroundRows + 1, row - d), sumOf(x, row + d, row + d + kAroundRows - 1)});
    return static_cast<double>(sumOf(x, row - half, row + half)) / (2 * half + 1) -
           static_cast<double>(around) / kAroundRows;
  }

private:
  int far() const { return 2 * half + kClearPx + 2 * kAroundRows; }
  int sumOf(int x, int from, int to) const {
    int sum = 0;
    if (from >= 0 && to < grey.rows) {
      const auto pitch = static_cast<std::ptrdiff_t>(grey.step[0]);
      const unsigned char* pixel = grey.data + from * pitch + x;
      for (int y = from; y <= to; ++y, pixel += pitch) sum += *pixel;
    } else {
      for (int y = from; y <= to; ++y) sum += grey.at<unsigned char>(std::clamp(y, 0, grey.rows - 1), x);
    }
    return sum;
  }

  TSlopeLine line;
  int half;
  cv::Rect part;
  TBuffer<unsigned char> pixels;
  cv::Mat grey;
};

// The light of the columns about an end, one after the other on the way out; the last centre is at
// the end's edgePx.
class TColumnsOfLight {
public:
  TColumnsOfLight(const TFrame& frame, const TEndOfPiece& end, const TSlopeLine& line) : light(frame.memory) {
    const TLightOfColumns columns(frame, end, line);
    const int way = end.isRight ? 1 : -1;
    TList<double> inner(frame.memory);
    for (const int x : columnsInside(frame, end)) inner.push_back(columns.at(x));
    if (!inner.empty()) {
      level = medianOf(inner);
      for (double& value : inner) value = std::abs(value - level);
      usual = 1.4826 * medianOf(inner);
    }
    int dark = 0;
    for (int i = -end.edgePx; i <= end.reachPx && dark <= (i <= end.freePx ? kLongestHole : kLongestBeside); ++i) {
      light.push_back(columns.at(lastColumn(end) + way * i));
      dark = light.back() < kFullShare * level ? dark + 1 : 0;
    }
  }

  int count() const { return static_cast<int>(light.size()); }
  double at(int i) const { return light[static_cast<std::size_t>(i)]; }
  double inside() const { return level; }
  // Of what a column of the piece may lack by chance.
  double scatter() const { return usual; }

private:
  TList<double> light;
  double level = 0.0;
  double usual = 0.0;
};

// The column that parts lit ones from dark ones best: holes and grains on the way count by their size.
int lastLit(const TColumnsOfLight& light, int lastCentre) {
  const double threshold = std::clamp(light.inside() - kUsualScatters * light.scatter(),
                                      kFullShare * light.inside(), kLeastSure * light.inside());
  int best = lastCentre;
  double highest = 0.0;
  double sum = 0.0;
  for (int i = 0; i < light.count(); ++i) {
    sum = std::max(sum + std::clamp((light.at(i) - threshold) / (light.inside() - threshold), -kDarkWeight, 1.0),
                   highest - kMostLoss);
    if (sum <= highest) continue;
    highest = sum;
    best = i;
  }
  return best;
}

// By how much the edge lies beyond the middle of the last lit column, or before it.
double shareBeyond(const TColumnsOfLight& light, int last) {
  const double noise = kUsualScatters * light.scatter() / light.inside();
  const double lacking = 1.0 - light.at(last) / light.inside();
  const double next = last + 1 < light.count() ? light.at(last + 1) / light.inside() : 0.0;
  const double beyond = next > noise ? std::min(next, kLeastSure) : 0.0;
  return beyond - (lacking > noise ? std::min(lacking, kFullShare) : 0.0);
}

}  // namespace

TSlopeLine lineAtEnd(const TFrame& frame, const TEndOfPiece& end) {
  const TPointView centres = centresNear(end);
  const std::size_t step = centres.size() < kManyCentres ? 1 : 3;
  const auto originX = static_cast<double>(centres.front().x);
  const std::optional<TStripeCurve> line = fitStripeLine(onLight(frame, centres, step), originX, frame.memory);
  if (!line) return {0.0, static_cast<double>(end.isRight ? centres.back().y : centres.front().y)};
  return {line->k, line->a - line->k * originX};
}

TLitEnd endOfLight(const TFrame& frame, const TEndOfPiece& end) {
  return endOfLight(frame, end, lineAtEnd(frame, end));
}

TLitEnd endOfLight(const TFrame& frame, const TEndOfPiece& end, const TSlopeLine& line) {
  const TColumnsOfLight light(frame, end, line);
  double beyond = 0.0;
  bool isSharp = false;
  if (light.inside() >= kLeastLight) {
    const int last = lastLit(light, end.edgePx);
    beyond = last - end.edgePx + shareBeyond(light, last);
    isSharp = last + 2 < light.count() && light.at(last) - light.at(last + 2) > kSharpShare * light.inside();
  }
  const double x = lastColumn(end) + (end.isRight ? beyond : -beyond);
  return {{x, line.k * x + line.b}, isSharp};
}

}  // namespace weld
