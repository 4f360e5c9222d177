#include "stripe/break_lines.h"

#include "support/arena.h"
#include "support/line_math.h"
#include "support/median.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <cstdint>

namespace weld {

namespace {

constexpr int kSteepest = 15;  // tenths of a column per row: of the joint in the image
constexpr int kLineRows = 9;   // beside the stripe, on either side
constexpr int kRows = 2 * kLineRows;
constexpr double kLineClearance = 7.0;  // px beyond the edges of the stripe
constexpr int kBesideFrom = 3;          // columns from the line to those that it is held against,
constexpr int kBesideColumns = 5;       // on either side
constexpr int kBesideTo = kBesideFrom + kBesideColumns - 1;

constexpr int kBlockColumns = 32;      // whose surroundings are taken for equally lit
constexpr double kLowShare = 0.16;     // of them, a scatter below their median
constexpr double kMostScatters = 1.5;  // above it: what is brighter is no room light
constexpr int kLeastOver = 3;          // grey levels

constexpr int kShares = 10;                   // of a column
constexpr int kLightUnits = kRows * kShares;  // sums of so many make a grey level
constexpr int kDarkUnits = kLightUnits * kBesideColumns;
constexpr double kLeastScatter = 0.5;  // grey levels: of images without noise

static_assert(255 * kLightUnits <= UINT16_MAX, "light is summed up in 16 bits");

// The image about a stripe.
struct TBand {
  cv::Mat levels;   // beyond the border of the image as on it
  TList<int> rows;  // of the stripe there, column by column
  int nearestRow;   // beside the stripe that is read, from it
  int firstColumn;  // of the stripe there
};

// A part of the image, whatever of it lies inside.
cv::Mat bordered(const cv::Mat& grey, const cv::Rect& part, const TBuffer<unsigned char>& pixels) {
  const cv::Rect seen = part & cv::Rect({}, grey.size());
  cv::Mat levels(part.size(), CV_8UC1, pixels.data());
  cv::copyMakeBorder(grey(seen), levels, seen.y - part.y, part.br().y - seen.br().y, seen.x - part.x,
                     part.br().x - seen.br().x, cv::BORDER_REPLICATE);
  return levels;
}

// A further line of light beside the stripe would make a dark one of what lies between the two.
void dimToRoomLight(TBand& band) {
  const int columns = static_cast<int>(band.rows.size());
  for (int first = 0; first < columns; first += kBlockColumns) {
    const int count = std::min(kBlockColumns, columns - first);
    std::array<int, 256> histogram{};
    for (int i = first; i < first + count; ++i) {
      const int row = band.rows[static_cast<std::size_t>(i)];
      for (int k = 0; k < kLineRows; ++k) {
        for (const int y : {row - band.nearestRow - k, row + band.nearestRow + k})
          ++histogram[band.levels.at<unsigned char>(y, band.firstColumn + i)];
      }
    }
    const auto levelOf = [&](double share) {
      int rest = static_cast<int>(share * kRows * count);
      int level = 0;
      while (rest >= histogram[static_cast<std::size_t>(level)])
        rest -= histogram[static_cast<std::size_t>(level++)];
      return level;
    };
    const int median = levelOf(0.5);
    const double over = std::max(kMostScatters * (median - levelOf(kLowShare)), 1.0 * kLeastOver);
    const int left = first == 0 ? 0 : band.firstColumn + first;
    const int right = first + count == columns ? band.levels.cols : band.firstColumn + first + count;
    cv::Mat block = band.levels.colRange(left, right);
    cv::min(block, median + over, block);
  }
}

// A row beside the stripe, and where a line that leans meets it.
struct TCrossing {
  int row;  // from the stripe
  int column;
  std::uint16_t left;  // shares of that column and of the next
  std::uint16_t right;
};
using TCrossings = std::array<TCrossing, kRows>;

TCrossings crossingsOf(int nearestRow, int tenths) {
  TCrossings crossings;
  for (int k = 0; k < kRows; ++k) {
    const int row = k < kLineRows ? nearestRow + k : kLineRows - nearestRow - k;
    const int shift = tenths * row;
    const int column = shift >= 0 ? shift / kShares : -((kShares - 1 - shift) / kShares);
    const auto right = static_cast<std::uint16_t>(shift - kShares * column);
    crossings[static_cast<std::size_t>(k)] = {row, column, static_cast<std::uint16_t>(kShares - right), right};
  }
  return crossings;
}

// The light along a line through each column that leans by tenths of a column per row.
void sumLight(const TBand& band, int tenths, TList<std::uint16_t>& light) {
  const TCrossings crossings = crossingsOf(band.nearestRow, tenths);
  std::fill(light.begin(), light.end(), std::uint16_t{0});
  const std::size_t columns = light.size();
  std::size_t end = 0;
  for (std::size_t first = 0; first < columns; first = end) {
    const int row = band.rows[first];
    while (end < columns && band.rows[end] == row) ++end;
    for (const TCrossing& c : crossings) {
      const unsigned char* const levels = band.levels.ptr(row + c.row) + band.firstColumn + c.column;
      for (std::size_t i = first; i < end; ++i)
        light[i] = static_cast<std::uint16_t>(light[i] + c.left * levels[i] + c.right * levels[i + 1]);
    }
  }
}

// By how much that light is less than on its darker side.
void takeDarkness(const TList<std::uint16_t>& light, TList<int>& darkness) {
  std::fill(darkness.begin(), darkness.end(), 0);
  const auto sumFrom = [&](std::size_t first) {
    int sum = 0;
    for (std::size_t i = first; i < first + kBesideColumns; ++i) sum += light[i];
    return sum;
  };
  for (std::size_t i = kBesideTo; i + kBesideTo < light.size(); ++i)
    darkness[i] = std::min(sumFrom(i - kBesideTo), sumFrom(i + kBesideFrom)) - kBesideColumns * light[i];
}

TList<double> darkestLines(const TBand& band, TMemory* memory) {
  const std::size_t columns = band.rows.size();
  TList<double> lines(columns, 0.0, memory);
  TList<std::uint16_t> light(columns, memory);
  TList<int> darkness(columns, memory);
  TList<int> work(memory);
  for (int tenths = -kSteepest; tenths <= kSteepest; ++tenths) {
    sumLight(band, tenths, light);
    takeDarkness(light, darkness);
    const double unit = std::max(scatterOf(darkness, work) / kDarkUnits, kLeastScatter) * kDarkUnits;
    for (std::size_t i = 0; i < columns; ++i) lines[i] = std::max(lines[i], darkness[i] / unit);
  }
  return lines;
}

}  // namespace

TList<double> findLines(const cv::Mat& grey, int firstColumn, TView<double> rows, double widthPx,
                        TMemory* memory) {
  TBand band{{}, TList<int>(memory), roundToInt(0.5 * widthPx + kLineClearance), 0};
  band.rows.reserve(rows.size());
  for (const double row : rows) band.rows.push_back(std::clamp(roundToInt(row), 0, grey.rows - 1));
  const auto [top, bottom] = std::minmax_element(band.rows.begin(), band.rows.end());
  const int reach = band.nearestRow + kLineRows;
  band.firstColumn = kSteepest * reach / kShares + 1;
  const int columns = static_cast<int>(rows.size());
  const cv::Rect part(firstColumn - band.firstColumn, *top - reach, columns + 2 * band.firstColumn,
                      *bottom - *top + 2 * reach + 1);
  const TBuffer<unsigned char> pixels(memory, static_cast<std::size_t>(part.area()));
  band.levels = bordered(grey, part, pixels);
  for (int& row : band.rows) row -= part.y;
  dimToRoomLight(band);
  return darkestLines(band, memory);
}

}  // namespace weld
