#include "stripe/ridge_candidates.h"

#include "stripe/ridge_threshold.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace weld {

namespace {

constexpr int kWeakShift = 1;       // a weak candidate has half the contrast of a strong one
constexpr double kRootUnit = 16.0;  // fixed point of the root of a width
constexpr int kLanes = 32;          // columns that are ruled out at once

void insertCandidate(TRidgeCandidates& column, const TRidgeCandidate& candidate) {
  if (column.count < TRidgeCandidates::kMax) {
    column.items[static_cast<std::size_t>(column.count++)] = candidate;
    return;
  }
  auto weakest = std::min_element(column.items.begin(), column.items.end(),
                                  [](const auto& a, const auto& b) { return a.contrast < b.contrast; });
  if (candidate.contrast > weakest->contrast) *weakest = candidate;
}

// Columns of one scale, with three rows of response kept at a time.
class TScaleScan {
public:
  TScaleScan(const TRidgeLevel& source, const TRidgeScale& scale, double minContrast)
      : level(source),
        halfRows(scale.halfRows),
        widthPx(scale.widthPx),
        rootOfWidth(static_cast<int>(kRootUnit * std::sqrt(scale.widthPx))),
        strong(chooseRidgeThresholds(source, scale.halfRows, minContrast)),
        weak(strong.size()),
        rows(3, std::vector<short>(strong.size())),
        columns(strong.size()) {
    std::transform(strong.begin(), strong.end(), weak.begin(),
                   [](short least) { return static_cast<short>(least >> kWeakShift); });
  }

  std::vector<TRidgeCandidates> run() {
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
    const short* before = row(y + 2);
    const short* here = row(y);
    const short* after = row(y + 1);
    const short* least = weak.data();
    const int count = level.grey.cols;
    // Positive where the response reaches the threshold and neither neighbour exceeds it; 16-bit minima, so
    // that a whole block of columns is ruled out at once.
    const auto excess = [&](int x) {
      const short overBefore = static_cast<short>(here[x] - before[x]);
      const short overAfter = static_cast<short>(here[x] - after[x] + 1);
      const short overLeast = static_cast<short>(here[x] - least[x] + 1);
      return std::min(overBefore, std::min(overAfter, overLeast));
    };
    for (int first = 0; first < count; first += kLanes) {
      const int last = std::min(first + kLanes, count);
      if (last - first == kLanes) {
        short greatest = 0;
        for (int x = first; x < first + kLanes; ++x) greatest = std::max(greatest, excess(x));
        if (greatest == 0) continue;
      }
      for (int x = first; x < last; ++x) {
        if (excess(x) <= 0) continue;
        const int over = here[x] - least[x];
        const bool isStrong = here[x] >= strong[static_cast<std::size_t>(x)];
        insertCandidate(columns[static_cast<std::size_t>(x)],
                        {2 * y * level.stepY - 1, here[x], widthPx, over, here[x] * rootOfWidth, isStrong});
      }
    }
  }

  const TRidgeLevel& level;
  int halfRows;
  int widthPx;
  int rootOfWidth;
  std::vector<short> strong;  // least contrast per column of a strong candidate
  std::vector<short> weak;    // and of a weak one
  std::vector<std::vector<short>> rows;
  std::vector<TRidgeCandidates> columns;
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

std::vector<TRidgeCandidates> findRidgeCandidates(const std::vector<TRidgeLevel>& levels,
                                                  const std::vector<TRidgeScale>& scales, double minContrast) {
  std::vector<std::vector<TRidgeCandidates>> perScale;
  for (const TRidgeScale& scale : scales) {
    perScale.push_back(TScaleScan(levels[static_cast<std::size_t>(scale.level)], scale, minContrast).run());
  }
  std::vector<TRidgeCandidates> columns(static_cast<std::size_t>(levels.front().grey.cols));
  std::vector<TRidgeCandidate> pool;
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
