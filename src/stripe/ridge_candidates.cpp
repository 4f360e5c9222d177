#include "stripe/ridge_candidates.h"

#include <algorithm>
#include <cstdint>

namespace weld {

namespace {

constexpr int kStripPx = 128;   // columns that share one noise estimate
constexpr int kSampleRows = 8;  // every n-th row of a level enters the noise estimate
constexpr int kSampleColumns = 4;
constexpr int kBins = 512;  // histogram of the response, a quarter of a grey level each
constexpr int kUnitsPerBin = kRidgeUnit / 4;
constexpr double kUpperShare = 0.8;       // quantile above the median that measures the spread
constexpr double kSigmaPerSpread = 1.19;  // Gaussian sigma over the distance of the two quantiles
constexpr double kNoiseFactor = 5.0;      // least contrast over the spread of the response
constexpr double kFloorGrey = 8.0;        // least contrast where there is no noise
constexpr int kLanes = 16;

class TResponseHistogram {
public:
  void add(short response) {
    ++bins[static_cast<std::size_t>(std::clamp(response / kUnitsPerBin + kBins / 2, 0, kBins - 1))];
    ++total;
  }
  // Response, grey levels times kRidgeUnit, below which that share of the samples lies.
  int quantile(double share) const {
    const int rank = static_cast<int>(share * total);
    int below = 0;
    for (int i = 0; i < kBins; ++i) {
      below += bins[static_cast<std::size_t>(i)];
      if (below > rank) return (i - kBins / 2) * kUnitsPerBin;
    }
    return 0;
  }

private:
  std::array<int, kBins> bins{};
  int total = 0;
};

// Least contrast per column of the level: a multiple of the spread of the response nearby, which holds
// noise and texture alike, but not below the floor and not above twice the wanted contrast.
std::vector<short> chooseThresholds(const TRidgeLevel& level, int halfRows, double minContrast) {
  const int columns = level.grey.cols;
  const int stripColumns = std::max(1, kStripPx / level.stepX);
  const int strips = (columns + stripColumns - 1) / stripColumns;
  std::vector<TResponseHistogram> histograms(static_cast<std::size_t>(strips));
  std::vector<short> row(static_cast<std::size_t>(columns));
  const int sampleRows = std::max(1, kSampleRows / level.stepY);
  for (int y = 0; y < level.grey.rows; y += sampleRows) {
    computeRidgeRow(level, halfRows, y, row.data());
    for (int x = 0; x < columns; x += std::max(1, kSampleColumns / level.stepX)) {
      histograms[static_cast<std::size_t>(x / stripColumns)].add(row[static_cast<std::size_t>(x)]);
    }
  }
  std::vector<short> thresholds(static_cast<std::size_t>(columns));
  for (int x = 0; x < columns; ++x) {
    const TResponseHistogram& histogram = histograms[static_cast<std::size_t>(x / stripColumns)];
    if (x % stripColumns != 0) {
      thresholds[static_cast<std::size_t>(x)] = thresholds[static_cast<std::size_t>(x - 1)];
      continue;
    }
    const double median = histogram.quantile(0.5);
    const double sigma = (histogram.quantile(kUpperShare) - median) * kSigmaPerSpread;
    const double least = std::min(median + kNoiseFactor * sigma, 2.0 * minContrast * kRidgeUnit);
    thresholds[static_cast<std::size_t>(x)] =
        static_cast<short>(std::min(std::max(least, kFloorGrey * kRidgeUnit), 255.0 * kRidgeUnit));
  }
  return thresholds;
}

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
        thresholds(chooseThresholds(source, scale.halfRows, minContrast)),
        rows(3, std::vector<short>(thresholds.size())),
        columns(thresholds.size()) {}

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
    const short* least = thresholds.data();
    const int count = level.grey.cols;
    const auto isMaximum = [&](int x) {
      return (here[x] >= least[x]) & (here[x] > before[x]) & (here[x] >= after[x]);
    };
    for (int first = 0; first < count; first += kLanes) {
      const int last = std::min(first + kLanes, count);
      if (last - first == kLanes) {
        short any = 0;
        for (int x = first; x < first + kLanes; ++x) any = static_cast<short>(any | isMaximum(x));
        if (any == 0) continue;
      }
      for (int x = first; x < last; ++x) {
        if (!isMaximum(x)) continue;
        insertCandidate(columns[static_cast<std::size_t>(x)], {2 * y * level.stepY - 1, here[x], widthPx});
      }
    }
  }

  const TRidgeLevel& level;
  int halfRows;
  int widthPx;
  std::vector<short> thresholds;
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
      return a.contrast != b.contrast ? a.contrast > b.contrast : a.y != b.y ? a.y < b.y : a.widthPx < b.widthPx;
    });
    columns[c] = mergeColumn(pool.data(), pool.data() + pool.size());
  }
  return columns;
}

}  // namespace weld
