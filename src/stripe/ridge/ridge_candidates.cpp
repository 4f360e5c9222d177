#include "stripe/ridge/ridge_candidates.h"

#include "stripe/ridge/ridge_threshold.h"
#include "support/kernels/kernels.h"

#include <opencv2/core/hal/intrin.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
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

// The candidates of all scales of a column: narrow ones first.
class TPool {
public:
  void clear() { count = 0; }
  bool isEmpty() const { return count == 0; }

  // rank: contrast times the root of the width, how far it stands out of white noise.
  void add(int rank, int y, int widthPx, int origin) {
    order[count] =
        static_cast<std::uint64_t>(static_cast<std::uint32_t>(rank)) << 32U | ~static_cast<std::uint32_t>(y + 1);
    ys[count] = y;
    widths[count] = widthPx;
    origins[count++] = origin;
  }

  // Takes the strongest, the upper one of equally strong ones, and drops those inside its reach. Returns its
  // origin.
  int takeStrongest() {
    const std::size_t strongest =
        static_cast<std::size_t>(std::max_element(order.begin(), order.begin() + count) - order.begin());
    const int y = ys[strongest];
    const int widthPx = widths[strongest];
    const int origin = origins[strongest];
    std::size_t kept = 0;
    for (std::size_t i = 0; i < count; ++i) {
      const bool isKept = std::abs(y - ys[i]) >= widthPx + widths[i];
      order[kept] = order[i];
      ys[kept] = ys[i];
      widths[kept] = widths[i];
      origins[kept] = origins[i];
      kept += isKept ? 1 : 0;
    }
    count = kept;
    return origin;
  }

private:
  static constexpr std::size_t kMost = std::size_t{kMostRidgeScales} * TRidgeCandidates::kMax;

  std::size_t count = 0;
  std::array<std::uint64_t, kMost> order{};
  std::array<int, kMost> ys{};
  std::array<int, kMost> widths{};
  std::array<int, kMost> origins{};  // number of the scale and slot there
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
    for (int y = 0; y < level.rows; ++y) {
      computeRidgeRow(level, halfRows, y + 1, row(y + 1));
      collectMaxima(y);
    }
  }

  // Puts what the column found into the pool.
  void addTo(TPool& pool, int column, int scale) const {
    const TColumnMaxima& own = maxima[levelColumn(column)];
    for (int slot = 0; slot < TRidgeCandidates::kMax; ++slot) {
      const int contrast = own.contrast[slot];
      if (contrast == TColumnMaxima::kFree) continue;
      const int y = 2 * own.row[slot] * level.stepY - 1;
      pool.add(contrast * rootOfWidth, y, widthPx, scale * TRidgeCandidates::kMax + slot);
    }
  }

  TRidgeCandidate candidate(int column, int slot) const {
    const std::size_t x = levelColumn(column);
    const int contrast = maxima[x].contrast[slot];
    return {rowOf(x, slot), contrast, widthPx, contrast - weak[x], contrast >= strong[x]};
  }

private:
  // The column of the level for one of the finest level.
  std::size_t levelColumn(int column) const {
    return static_cast<std::size_t>(column / (level.stepX / kRidgeColumnStep));
  }
  int rowOf(std::size_t x, int slot) const { return 2 * maxima[x].row[slot] * level.stepY - 1; }

  short* row(int y) { return rows[static_cast<std::size_t>(y % 3)].data(); }

  void collectMaxima(int y) {
    const int count =
        kernels().ridgeRows.findMaxima({row(y + 2), row(y), row(y + 1), enough.data()}, level.cols, found.data());
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

// Candidates of several scales, strongest first, without those inside the reach of a stronger one.
TRidgeCandidates mergeColumn(int column, const std::pmr::vector<TScaleScan>& scans, TPool& pool) {
  TRidgeCandidates merged;
  pool.clear();
  for (std::size_t scale = 0; scale < scans.size(); ++scale)
    scans[scale].addTo(pool, column, static_cast<int>(scale));
  while (!pool.isEmpty() && merged.count < TRidgeCandidates::kMax) {
    const int origin = pool.takeStrongest();
    const TScaleScan& scan = scans[static_cast<std::size_t>(origin / TRidgeCandidates::kMax)];
    merged.items[static_cast<std::size_t>(merged.count++)] =
        scan.candidate(column, origin % TRidgeCandidates::kMax);
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
  const int count = levels.front().cols;
  std::pmr::vector<TRidgeCandidates> columns(memory);
  columns.reserve(static_cast<std::size_t>(count));
  TPool pool;
  for (int column = 0; column < count; ++column) columns.push_back(mergeColumn(column, scans, pool));
  return columns;
}

}  // namespace weld
