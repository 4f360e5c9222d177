// Line fits: time, and beside it the largest deviation from the true line over all columns of the stripe
// (counter `maxDeviationPx`). A fit that deviates by more than the limit is reported as an error, not timed.
#include "scenes/random.h"
#include "support/line_fit.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace {

constexpr int kColumns = 1280;
constexpr int kThinnedStep = 13;  // 1280 columns thinned to the 99 points that a consensus fit is handed
constexpr int kStripes = 50;
constexpr double kNoisePx = 0.5;
constexpr double kScalePx = 2.0;
constexpr double kTolPx = 5.0;
constexpr double kSlope = 0.2;
constexpr double kIntercept = 300.0;
constexpr double kOtherSlope = -0.35;
constexpr double kRobustLimitPx = 0.5;
constexpr double kConsensusLimitPx = 1.5;

// A stripe that bends where the other flank begins.
std::vector<cv::Point> bentStripe(double otherShare, int step, std::uint64_t seed) {
  scenes::TRandom random(seed, scenes::TStream::noise);
  const double bend = kColumns * (1.0 - otherShare);
  std::vector<cv::Point> points;
  for (int x = 0; x < kColumns; x += step) {
    const double y = kIntercept + kSlope * std::min<double>(x, bend) + kOtherSlope * std::max(x - bend, 0.0);
    points.emplace_back(x, static_cast<int>(std::lround(y + kNoisePx * scenes::toGaussian(random.next()))));
  }
  return points;
}

double maxDeviation(const zelFit::TLineFitResult& line) {
  const double atFirst = line.intercept - kIntercept;
  return std::max(std::abs(atFirst), std::abs(atFirst + (line.slope - kSlope) * (kColumns - 1)));
}

template <typename TFit>
void measure(benchmark::State& state, int step, double limitPx, TFit fit) {
  const double otherShare = static_cast<double>(state.range(0)) / 100.0;
  std::vector<std::vector<cv::Point>> stripes;
  double worst = 0.0;
  for (int i = 0; i < kStripes; ++i) {
    stripes.push_back(bentStripe(otherShare, step, static_cast<std::uint64_t>(i)));
    const zelFit::TLineFitResult line = fit(stripes.back());
    worst = std::max(worst, line.success ? maxDeviation(line) : 1e9);
  }
  state.counters["maxDeviationPx"] = worst;
  if (worst > limitPx) {
    state.SkipWithError(("the line is off by " + std::to_string(worst) + " px").c_str());
    return;
  }
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(fit(stripes[next]));
    next = (next + 1) % stripes.size();
  }
}

void robustFit(benchmark::State& state) {
  measure(state, 1, kRobustLimitPx, [](const std::vector<cv::Point>& points) {
    zelFit::TLineFitFactory factory;
    factory.createFitType_robustLine(points, 4, kScalePx);
    return factory.result();
  });
}
BENCHMARK(robustFit)->ArgName("otherPercent")->Arg(0)->Arg(20)->Arg(40)->Unit(benchmark::kMicrosecond);

void consensusFit(benchmark::State& state) {
  measure(state, kThinnedStep, kConsensusLimitPx, [](const std::vector<cv::Point>& points) {
    zelFit::TLineFitFactory factory;
    factory.createFitType_ransacLine(points, 0.0, kTolPx, 3.0, 45.0, true);
    return factory.result();
  });
}
BENCHMARK(consensusFit)->ArgName("otherPercent")->Arg(0)->Arg(20)->Arg(40)->Unit(benchmark::kMicrosecond);

}  // namespace
