#include "profile/stripe_noise.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr int kShort = 8;  // centres
constexpr int kLong = 40;
constexpr double kLeastPx = 0.25;
constexpr double kLargestRaise = 2.5;
constexpr int kBlock = 8;                   // centres whose mean is taken
constexpr double kMedianOfSquare = 0.4549;  // of a bell-shaped value of unit variance
constexpr double kBendVariance = 6.0;       // 1 + 4 + 1
constexpr double kLargestInflation = 12.0;

// Variance about lines over stretches of so many centres without a break, the given share of them being smaller;
// 0 without such a stretch.
double varianceOver(const TCentres& centres, const TMoments& moments, int length, double share,
                    TList<double>& variances) {
  variances.clear();
  int first = 0;
  for (int i = 1; i <= centres.count(); ++i) {
    const bool ends = i == centres.count() || centres.isBreak[static_cast<std::size_t>(i)] != 0;
    if (i - first == length) {
      const TLine line = moments.lineOf(TSpan{first, i});
      variances.push_back(line.variance * length / (length - 2));
      first = i;
    }
    if (ends) first = i;
  }
  if (variances.empty()) return 0.0;
  const auto rank = static_cast<std::ptrdiff_t>(share * static_cast<double>(variances.size()));
  std::nth_element(variances.begin(), variances.begin() + rank, variances.end());
  return variances[static_cast<std::size_t>(rank)];
}

// Variance of the means over blocks of centres, normal to the stripe; 0 without three blocks in a row.
double varianceOfMeans(const TCentres& centres, TList<double>& squares) {
  squares.clear();
  double means[3] = {};
  int blocks = 0;  // in a row
  int first = 0;
  double sum = 0.0;
  for (int i = 0; i < centres.count(); ++i) {
    if (i > 0 && (centres.isBreak[static_cast<std::size_t>(i)] != 0 || centres.holeBefore(i) > 0.0)) {
      blocks = 0;
      first = i;
      sum = 0.0;
    }
    sum += centres.y[static_cast<std::size_t>(i)];
    if (i - first + 1 < kBlock) continue;
    means[0] = means[1], means[1] = means[2], means[2] = sum / kBlock;
    first = i + 1;
    sum = 0.0;
    if (++blocks < 3) continue;
    const double bend = means[0] - 2.0 * means[1] + means[2];
    const double slope = (means[2] - means[0]) / (2.0 * kBlock);
    squares.push_back(bend * bend / (1.0 + slope * slope));
  }
  if (squares.empty()) return 0.0;
  const auto middle = static_cast<std::ptrdiff_t>(squares.size() / 2);
  std::nth_element(squares.begin(), squares.begin() + middle, squares.end());
  return squares[static_cast<std::size_t>(middle)] / (kMedianOfSquare * kBendVariance);
}

}  // namespace

TStripeNoise measureNoise(const TCentres& centres, const TMoments& moments, std::pmr::memory_resource* memory) {
  TList<double> variances(memory);
  variances.reserve(static_cast<std::size_t>(centres.count() / kShort + 1));
  const double fine = std::max(kLeastPx, std::sqrt(varianceOver(centres, moments, kShort, 0.5, variances)));
  const double coarse = std::sqrt(varianceOver(centres, moments, kLong, 0.25, variances));
  const double means = varianceOfMeans(centres, variances);
  return {std::clamp(coarse, fine, kLargestRaise * fine),
          std::clamp(kBlock * means / (fine * fine), 1.0, kLargestInflation)};
}

}  // namespace weld
