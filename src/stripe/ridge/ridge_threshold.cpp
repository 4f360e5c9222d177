#include "stripe/ridge/ridge_threshold.h"

#include <algorithm>
#include <array>
#include <utility>

namespace weld {

namespace {

constexpr int kStripPx = 128;        // columns that share one estimate
constexpr int kSampleRowsPx = 16;    // the estimate reads every n-th row
constexpr int kMinSampleRows = 64;   // unless that makes fewer rows than these
constexpr int kSampleColumnsPx = 8;  // and every n-th column

constexpr double kNoiseFactor = 6.0;
constexpr double kLeastShare = 0.25;  // of the wanted contrast
constexpr double kMostShare = 4.0;
constexpr double kLeastGrey = 4.0;  // whatever contrast is wanted
constexpr double kMostGrey = 255.0;

// Spread between the median and the upper quartile: a stripe covers few rows and hardly moves them.
constexpr double kUpperShare = 0.75;
constexpr double kSigmaPerSpread = 1.483;  // of a Gaussian

class TResponseHistogram {
public:
  // Every `step` of the responses.
  void add(const short* responses, int count, int step) {
    int x = 0;
    for (; x + step < count; x += 2 * step) {
      ++bins[0][binOf(responses[x])];
      ++bins[1][binOf(responses[x + step])];
      total += 2;
    }
    if (x >= count) return;
    ++bins[0][binOf(responses[x])];
    ++total;
  }

  // Responses below which these shares of the samples lie, the second one above the first.
  std::pair<int, int> quantiles(double lowShare, double highShare) const {
    std::size_t i = 0;
    int below = bins[0][0] + bins[1][0];
    const auto pass = [&](int rank) {
      for (; below <= rank && i + 1 < kBins; below += bins[0][i] + bins[1][i]) ++i;
      return responseOf(i);
    };
    const int low = pass(static_cast<int>(lowShare * total));
    return {low, pass(static_cast<int>(highShare * total))};
  }

private:
  static constexpr std::size_t kBins = 1024;  // +-64 grey levels
  static constexpr int kBinShift = 2;         // an eighth of a grey level each
  static constexpr int kZero = kBins / 2;

  static std::size_t binOf(short response) {
    return static_cast<std::size_t>(std::clamp((response >> kBinShift) + kZero, 0, 2 * kZero - 1));
  }
  static int responseOf(std::size_t bin) { return (static_cast<int>(bin) - kZero) * (1 << kBinShift); }

  // In turn in two counts: one alone would wait for itself, as most samples are alike.
  std::array<std::array<int, kBins>, 2> bins{};
  int total = 0;
};

std::pmr::vector<TResponseHistogram> sampleStrips(const TRidgeLevel& level, int halfRows, int stripColumns,
                                                  std::pmr::memory_resource* memory) {
  const int columns = level.cols;
  std::pmr::vector<TResponseHistogram> strips(
      static_cast<std::size_t>((columns + stripColumns - 1) / stripColumns), memory);
  std::pmr::vector<short> row(static_cast<std::size_t>(columns), memory);
  const int rowStep = std::max(1, std::min(kSampleRowsPx / level.stepY, level.rows / kMinSampleRows));
  const int columnStep = std::max(1, kSampleColumnsPx / level.stepX);
  for (int y = 0; y < level.rows; y += rowStep) {
    computeRidgeRow(level, halfRows, y, row.data());
    int first = 0;
    for (TResponseHistogram& strip : strips) {
      const int last = std::min(first + stripColumns, columns);
      strip.add(row.data() + first, last - first, columnStep);
      first = last;
    }
  }
  return strips;
}

short chooseThreshold(const TResponseHistogram& histogram, double minContrast) {
  const auto [median, upper] = histogram.quantiles(0.5, kUpperShare);
  const double sigma = (upper - median) * kSigmaPerSpread;
  // The order of the arguments lets a NaN drop out.
  const double least = std::min(std::max(kLeastGrey, kLeastShare * minContrast), kMostGrey) * kRidgeUnit;
  const double most = std::min(kMostGrey, kMostShare * minContrast) * kRidgeUnit;
  return static_cast<short>(std::max(least, std::min(median + kNoiseFactor * sigma, most)));
}

}  // namespace

std::pmr::vector<short> chooseRidgeThresholds(const TRidgeLevel& level, int halfRows, double minContrast,
                                              std::pmr::memory_resource* memory) {
  const int stripColumns = std::max(1, kStripPx / level.stepX);
  std::pmr::vector<short> thresholds(memory);
  thresholds.reserve(static_cast<std::size_t>(level.cols + stripColumns));
  for (const TResponseHistogram& strip : sampleStrips(level, halfRows, stripColumns, memory)) {
    thresholds.insert(thresholds.end(), static_cast<std::size_t>(stripColumns),
                      chooseThreshold(strip, minContrast));
  }
  thresholds.resize(static_cast<std::size_t>(level.cols));
  return thresholds;
}

}  // namespace weld
