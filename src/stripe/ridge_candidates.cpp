#include "stripe/ridge_candidates.h"

#include "stripe/ridge_threshold.h"

#include <opencv2/core/hal/intrin.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace weld {

namespace {

using cv::v_int16x8;

constexpr int kWeakShift = 1;       // a weak candidate has half the contrast of a strong one
constexpr double kRootUnit = 16.0;  // fixed point of the root of a width
constexpr int kLanes = 16;          // columns that are ruled out at once

int weakestContrast(const TRidgeCandidates& column) {
  return std::min_element(column.items.begin(), column.items.end(),
                          [](const auto& a, const auto& b) { return a.contrast < b.contrast; })
      ->contrast;
}

// Three rows of response one below the other, and the least response that counts in every column.
struct TRows {
  const short* before;
  const short* here;
  const short* after;
  const short* least;

  // Neither neighbour exceeds it; of equal ones the upper is taken.
  bool isMaximum(int x) const { return here[x] > before[x] && here[x] >= after[x] && here[x] >= least[x]; }

  // Bit i is set where column x + i holds a maximum.
  unsigned maximaFrom(int x) const {
    static_assert(kLanes == 2 * v_int16x8::nlanes);
    const auto halfFrom = [&](int first) {
      const v_int16x8 response = cv::v_load(here + first);
      return (response > cv::v_load(before + first)) & (response >= cv::v_load(after + first)) &
             (response >= cv::v_load(least + first));
    };
    return static_cast<unsigned>(cv::v_signmask(cv::v_pack(halfFrom(x), halfFrom(x + v_int16x8::nlanes))));
  }
};

// Columns of one scale, with three rows of response kept at a time.
class TScaleScan {
public:
  TScaleScan(const TRidgeLevel& source, const TRidgeScale& scale, double minContrast,
             std::pmr::memory_resource* memory)
      : level(source),
        halfRows(scale.halfRows),
        widthPx(scale.widthPx),
        rootOfWidth(static_cast<int>(kRootUnit * std::sqrt(scale.widthPx))),
        strong(chooseRidgeThresholds(source, scale.halfRows, minContrast, memory)),
        weak(strong.size(), memory),
        enough(memory),
        rows(3, std::pmr::vector<short>(strong.size(), memory), memory),
        columns(strong.size(), memory) {
    std::transform(strong.begin(), strong.end(), weak.begin(),
                   [](short least) { return static_cast<short>(least >> kWeakShift); });
    enough = weak;
  }

  std::pmr::vector<TRidgeCandidates> run() {
    computeRidgeRow(level, halfRows, 0, row(0));
    computeRidgeRow(level, halfRows, 0, row(2));
    for (int y = 0; y < level.grey.rows; ++y) {
      computeRidgeRow(level, halfRows, y + 1, row(y + 1));
      collectMaxima(y);
    }
    return std::move(columns);
  }

private:
  short* row(int y) { return rows[static_cast<std::size_t>(y % 3)].data(); }

  void collectMaxima(int y) {
    const TRows at{row(y + 2), row(y), row(y + 1), enough.data()};
    const int count = level.grey.cols;
    int x = 0;
    for (; x + kLanes <= count; x += kLanes) {
      for (unsigned bits = at.maximaFrom(x); bits != 0; bits &= bits - 1) collect(y, x + __builtin_ctz(bits));
    }
    for (; x < count; ++x) {
      if (at.isMaximum(x)) collect(y, x);
    }
  }

  void collect(int y, int column) {
    const auto x = static_cast<std::size_t>(column);
    const int contrast = row(y)[x];
    insert(x, {2 * y * level.stepY - 1, contrast, widthPx, contrast - weak[x], contrast * rootOfWidth,
               contrast >= strong[x]});
  }

  // A full column asks for more than its weakest has, and the first of its weakest makes room.
  void insert(std::size_t x, const TRidgeCandidate& candidate) {
    TRidgeCandidates& column = columns[x];
    if (column.count < TRidgeCandidates::kMax) {
      column.items[static_cast<std::size_t>(column.count++)] = candidate;
    } else {
      const int weakest = enough[x] - 1;
      *std::find_if(column.items.begin(), column.items.end(),
                    [&](const TRidgeCandidate& item) { return item.contrast == weakest; }) = candidate;
    }
    if (column.count == TRidgeCandidates::kMax) enough[x] = static_cast<short>(weakestContrast(column) + 1);
  }

  const TRidgeLevel& level;
  int halfRows;
  int widthPx;
  int rootOfWidth;
  std::pmr::vector<short> strong;  // least contrast per column of a strong candidate
  std::pmr::vector<short> weak;    // and of a weak one
  std::pmr::vector<short> enough;  // and of one that the column still takes
  std::pmr::vector<std::pmr::vector<short>> rows;
  std::pmr::vector<TRidgeCandidates> columns;
};

// Candidates of several scales, strongest first, without those inside the reach of a stronger one.
TRidgeCandidates mergeColumn(const TRidgeCandidate* begin, const TRidgeCandidate* end) {
  TRidgeCandidates merged;
  for (const TRidgeCandidate* it = begin; it != end && merged.count < TRidgeCandidates::kMax; ++it) {
    const auto keptEnd = merged.items.begin() + merged.count;
    const bool isCovered = std::any_of(merged.items.begin(), keptEnd, [&](const TRidgeCandidate& kept) {
      return std::abs(kept.y - it->y) < kept.widthPx + it->widthPx;
    });
    if (!isCovered) merged.items[static_cast<std::size_t>(merged.count++)] = *it;
  }
  return merged;
}

}  // namespace

std::pmr::vector<TRidgeCandidates> findRidgeCandidates(const std::pmr::vector<TRidgeLevel>& levels,
                                                       const std::pmr::vector<TRidgeScale>& scales,
                                                       double minContrast, std::pmr::memory_resource* memory) {
  std::pmr::vector<std::pmr::vector<TRidgeCandidates>> perScale(memory);
  perScale.reserve(scales.size());
  for (const TRidgeScale& scale : scales) {
    perScale.push_back(
        TScaleScan(levels[static_cast<std::size_t>(scale.level)], scale, minContrast, memory).run());
  }
  std::pmr::vector<TRidgeCandidates> columns(static_cast<std::size_t>(levels.front().grey.cols), memory);
  std::pmr::vector<TRidgeCandidate> pool(memory);
  pool.reserve(scales.size() * TRidgeCandidates::kMax);
  for (std::size_t c = 0; c < columns.size(); ++c) {
    pool.clear();
    for (std::size_t s = 0; s < scales.size(); ++s) {
      const int stepX = levels[static_cast<std::size_t>(scales[s].level)].stepX / kRidgeColumnStep;
      const TRidgeCandidates& found = perScale[s][c / static_cast<std::size_t>(stepX)];
      pool.insert(pool.end(), found.items.begin(), found.items.begin() + found.count);
    }
    std::sort(pool.begin(), pool.end(), [](const auto& a, const auto& b) {
      return a.rank != b.rank ? a.rank > b.rank : a.y != b.y ? a.y < b.y : a.widthPx < b.widthPx;
    });
    columns[c] = mergeColumn(pool.data(), pool.data() + pool.size());
  }
  return columns;
}

}  // namespace weld
