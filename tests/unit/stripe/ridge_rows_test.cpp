#include "support/kernels/kernels.h"

#include "scenes/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace weld {
namespace {

TEST(RidgeRows, GiveWhatPlainLoopsGiveAtEveryWidth) {
  using TRow = std::vector<short>;
  for (const TRidgeRows* kernels : {&kBaselineKernels.ridgeRows, &weld::kernels().ridgeRows}) {
    scenes::TRandom random(1, scenes::TStream::layout);
    for (int n = 1; n <= 100; ++n) {
      const auto draw = [&] {
        TRow row(static_cast<std::size_t>(n));
        for (short& value : row) value = static_cast<short>(random.integer(0, 9));  // often equal
        return row;
      };
      const TRow a = draw(), b = draw(), c = draw(), d = draw();
      const std::vector<unsigned char> pixels(a.begin(), a.end());
      TRow pairs(a.size()), sums(a.size()), halves(a.size()), quarters(a.size()), response(a.size());
      std::vector<int> maxima(a.size() + kFoundMargin);
      kernels->pairColumns(pixels.data(), n, pairs.data());
      kernels->addRows(a.data(), b.data(), n, sums.data());
      kernels->halveSums(a.data(), n, halves.data());
      kernels->halveSumsAndColumns(a.data(), n, quarters.data());
      kernels->respond({a.data(), b.data(), c.data(), d.data()}, n, response.data());
      maxima.resize(kernels->findMaxima({a.data(), b.data(), c.data(), d.data()}, n, maxima.data()));
      std::vector<int> expectedMaxima;
      for (int x = 0; x < n; ++x) {
        EXPECT_EQ(sums[x], a[x] + b[x]) << n;
        EXPECT_EQ(halves[x], (a[x] + 1) / 2) << n;
        EXPECT_EQ(response[x], b[x] + c[x] - 2 * std::max(a[x], d[x])) << n;
        if (b[x] > a[x] && b[x] >= c[x] && b[x] >= d[x]) expectedMaxima.push_back(x);
        if (x % 2 != 0) continue;
        const int pair = a[x] + a[std::min(x + 1, n - 1)];
        EXPECT_EQ(pairs[x / 2], pair * kRidgeLevelUnit / 2) << n;
        EXPECT_EQ(quarters[x / 2], (pair + 2) / 4) << n;
      }
      EXPECT_EQ(maxima, expectedMaxima) << n;
    }
  }
}

}  // namespace
}  // namespace weld
