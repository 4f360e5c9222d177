#include "profile/stripe_noise.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr int kShort = 8;  // centres
constexpr int kLong = 40;
constexpr double kLeastPx = 0.25;
constexpr double kLargestRaise = 2.5;

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

}  // namespace

double measureNoise(const TCentres& centres, const TMoments& moments, std::pmr::memory_resource* memory) {
  TList<double> variances(memory);
  variances.reserve(static_cast<std::size_t>(centres.count() / kShort + 1));
  const double fine = std::max(kLeastPx, std::sqrt(varianceOver(centres, moments, kShort, 0.5, variances)));
  const double coarse = std::sqrt(varianceOver(centres, moments, kLong, 0.25, variances));
  return std::clamp(coarse, fine, kLargestRaise * fine);
}

}  // namespace weld
