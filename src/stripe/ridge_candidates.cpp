#include "stripe/ridge_candidates.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace weld {

namespace {

constexpr int kStripPx = 128;        // columns that share one noise estimate
constexpr int kSampleRowsPx = 16;    // the noise estimate reads every n-th row
constexpr int kMinSampleRows = 64;   // unless that makes fewer rows than these
constexpr int kSampleColumnsPx = 8;  // and every n-th column
constexpr int kBins = 512;           // histogram of the response, a quarter of a grey level each
constexpr int kUnitsPerBin = kRidgeUnit / 4;
constexpr double kUpperShare = 0.75;       // quantile above the median that measures the spread
constexpr double kSigmaPerSpread = 1.483;  // Gaussian sigma over the distance of the two quantiles
constexpr double kNoiseFactor = 6.0;       // least contrast over the spread of the response
constexpr int kWeakNumerator = 4;          // a weak candidate has 4/8 of the contrast of a strong one
constexpr int kWeakShift = 3;
constexpr double kFloorGrey = 8.0;       // least contrast where there is no noise
constexpr double kMostOverWanted = 4.0;  // highest threshold over the wanted contrast
constexpr double kRootUnit = 16.0;       // fixed point of the root of a width
constexpr int kLanes = 32;

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

std::vector<TResponseHistogram> sampleStrips(const TRidgeLevel& level, int halfRows, int stripColumns) {
  const int columns = level.grey.cols;
  std::vector<TResponseHistogram> strips(static_cast<std::size_t>((columns + stripColumns - 1) / stripColumns));
  std::vector<short> row(static_cast<std::size_t>(columns));
  const int rowStep = std::max(1, std::min(kSampleRowsPx / level.stepY, level.grey.rows / kMinSampleRows));
  const int columnStep = std::max(1, kSampleColumnsPx / level.stepX);
  for (int y = 0; y < level.grey.rows; y += rowStep) {
    computeRidgeRow(level, halfRows, y, row.data());
    int first = 0;
    for (TResponseHistogram& strip : strips) {
      const int last = std::min(first + stripColumns, columns);
      for (int x = first; x < last; x += columnStep) strip.add(row[static_cast<std::size_t>(x)]);
      first = last;
    }
  }
  return strips;
}

// A multiple of the spread of the response, which holds noise and texture alike, but not below the floor and
// not above twice the wanted contrast.
short chooseThreshold(const TResponseHistogram& histogram, double minContrast) {
  const double median = histogram.quantile(0.5);
  const double sigma = (histogram.quantile(kUpperShare) - median) * kSigmaPerSpread;
  const double least = std::min(median + kNoiseFactor * sigma, kMostOverWanted * minContrast * kRidgeUnit);
  return static_cast<short>(std::min(std::max(least, kFloorGrey * kRidgeUnit), 255.0 * kRidgeUnit));
}

// Least contrast per column of the level.
std::vector<short> chooseThresholds(const TRidgeLevel& level, int halfRows, double minContrast) {
  const int stripColumns = std::max(1, kStripPx / level.stepX);
  std::vector<short> thresholds;
  thresholds.reserve(static_cast<std::size_t>(level.grey.cols + stripColumns));
  for (const TResponseHistogram& strip : sampleStrips(level, halfRows, stripColumns)) {
    thresholds.insert(thresholds.end(), static_cast<std::size_t>(stripColumns),
                      chooseThreshold(strip, minContrast));
  }
  thresholds.resize(static_cast<std::size_t>(level.grey.cols));
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
        rootOfWidth(static_cast<int>(kRootUnit * std::sqrt(scale.widthPx))),
        strong(chooseThresholds(source, scale.halfRows, minContrast)),
        weak(strong.size()),
        rows(3, std::vector<short>(strong.size())),
        columns(strong.size()) {
    std::transform(strong.begin(), strong.end(), weak.begin(),
                   [](short least) { return static_cast<short>(least * kWeakNumerator >> kWeakShift); });
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
