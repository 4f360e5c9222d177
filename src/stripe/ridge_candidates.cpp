#include "stripe/ridge_candidates.h"

#include "stripe/ridge_rows.h"
#include "stripe/ridge_threshold.h"

#include <opencv2/core/hal/intrin.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace weld {

namespace {

using cv::v_int16x8;

constexpr int kWeakShift = 1;       // a weak candidate has half the contrast of a strong one
constexpr double kRootUnit = 16.0;  // fixed point of the root of a width

// The strongest maxima of a column in one scale. A slot that is free has the least of all contrasts.
struct alignas(16) TColumnMaxima {
  static constexpr short kFree = std::numeric_limits<short>::min();
  static constexpr short kNoSlot = std::numeric_limits<short>::max();
  static_assert(TRidgeCandidates::kMax == 6 && v_int16x8::nlanes == 8,
                "a vector is six slots and two that are none");

  short contrast[v_int16x8::nlanes] = {kFree, kFree, kFree, kFree, kFree, kFree, kNoSlot, kNoSlot};
  int row[TRidgeCandidates::kMax] = {};
  short weakest = kFree;

  // The first of the weakest makes room.
  void insert(short newContrast, int newRow) {
    const v_int16x8 before = cv::v_load_aligned(contrast);
    const int slot = cv::v_scan_forward(before == cv::v_setall_s16(weakest));
    // In the register: a vector cannot be loaded soon after one of its lanes was stored.
    const v_int16x8 isSlot = v_int16x8(0, 1, 2, 3, 4, 5, 6, 7) == cv::v_setall_s16(static_cast<short>(slot));
    const v_int16x8 after = cv::v_select(isSlot, cv::v_setall_s16(newContrast), before);
    cv::v_store_aligned(contrast, after);
    row[slot] = newRow;
    weakest = cv::v_reduce_min(after);
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
        maxima(strong.size(), memory),
        found(strong.size() + kFoundMargin, memory) {
    std::transform(strong.begin(), strong.end(), weak.begin(),
                   [](short least) { return static_cast<short>(least >> kWeakShift); });
    enough = weak;
  }

  void run() {
    computeRidgeRow(level, halfRows, 0, row(0));
    computeRidgeRow(level, halfRows, 0, row(2));
    for (int y = 0; y < level.grey.rows; ++y) {
      computeRidgeRow(level, halfRows, y + 1, row(y + 1));
      collectMaxima(y);
    }
  }

  // The candidates that a column of the level found.
  void appendTo(std::pmr::vector<TRidgeCandidate>& candidates, std::size_t x) const {
    for (std::size_t slot = 0; slot < TRidgeCandidates::kMax; ++slot) {
      const int contrast = maxima[x].contrast[slot];
      if (contrast == TColumnMaxima::kFree) continue;
      candidates.push_back({2 * maxima[x].row[slot] * level.stepY - 1, contrast, widthPx, contrast - weak[x],
                            contrast * rootOfWidth, contrast >= strong[x]});
    }
  }

  // Columns of the finest level to one of this.
  int columnStep() const { return level.stepX / kRidgeColumnStep; }

private:
  short* row(int y) { return rows[static_cast<std::size_t>(y % 3)].data(); }

  void collectMaxima(int y) {
    const int count = chooseRidgeRows().findMaxima({row(y + 2), row(y), row(y + 1), enough.data()},
                                                   level.grey.cols, found.data());
    std::for_each(found.begin(), found.begin() + count, [&](int column) { collect(y, column); });
  }

  // A full column asks for more than its weakest has.
  void collect(int y, int column) {
    const auto x = static_cast<std::size_t>(column);
    maxima[x].insert(row(y)[x], y);
    enough[x] = std::max(enough[x], static_cast<short>(maxima[x].weakest + 1));
  }

  const TRidgeLevel& level;
  int halfRows;
  int widthPx;
  int rootOfWidth;
  std::pmr::vector<short> strong;  // least contrast per column of a strong candidate
  std::pmr::vector<short> weak;    // and of a weak one
  std::pmr::vector<short> enough;  // and of one that the column still takes
  std::pmr::vector<std::pmr::vector<short>> rows;
  std::pmr::vector<TColumnMaxima> maxima;
  std::pmr::vector<int> found;  // columns with a maximum in the row at hand
};

bool isStronger(const TRidgeCandidate& a, const TRidgeCandidate& b) {
  return a.rank != b.rank ? a.rank > b.rank : a.y != b.y ? a.y < b.y : a.widthPx < b.widthPx;
}

// Candidates of several scales, strongest first, without those inside the reach of a stronger one. Uses up the
// pool.
TRidgeCandidates mergeColumn(std::pmr::vector<TRidgeCandidate>& pool) {
  TRidgeCandidates merged;
  while (!pool.empty() && merged.count < TRidgeCandidates::kMax) {
    const TRidgeCandidate strongest = *std::min_element(pool.begin(), pool.end(), isStronger);
    merged.items[static_cast<std::size_t>(merged.count++)] = strongest;
    const auto isCovered = [&](const TRidgeCandidate& other) {
      return std::abs(strongest.y - other.y) < strongest.widthPx + other.widthPx;
    };
    pool.erase(std::remove_if(pool.begin(), pool.end(), isCovered), pool.end());
  }
  return merged;
}

}  // namespace

std::pmr::vector<TRidgeCandidates> findRidgeCandidates(const std::pmr::vector<TRidgeLevel>& levels,
                                                       const std::pmr::vector<TRidgeScale>& scales,
                                                       double minContrast, std::pmr::memory_resource* memory) {
  std::pmr::vector<TScaleScan> scans(memory);
  scans.reserve(scales.size());
  for (const TRidgeScale& scale : scales) {
    scans.emplace_back(levels[static_cast<std::size_t>(scale.level)], scale, minContrast, memory).run();
  }
  std::pmr::vector<TRidgeCandidates> columns(static_cast<std::size_t>(levels.front().grey.cols), memory);
  std::pmr::vector<TRidgeCandidate> pool(memory);
  pool.reserve(scales.size() * TRidgeCandidates::kMax);
  for (std::size_t c = 0; c < columns.size(); ++c) {
    pool.clear();
    for (const TScaleScan& scan : scans) scan.appendTo(pool, c / static_cast<std::size_t>(scan.columnStep()));
    columns[c] = mergeColumn(pool);
  }
  return columns;
}

}  // namespace weld
