// Ridge extraction, measured in times of copying the same frame: copy and extraction take turns, so that whatever
// else the machine does meets both. Prints the ratio of the medians as the counter `timesCopyTo` and the mean
// distance to the true centres as `meanErrorPx`.
#include "stripe/ridge/ridge.h"
#include "against_copy.h"

#include "scenes/score.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <numeric>

namespace {

constexpr weld::TRidgeSettings kSettings{6.0, 30.0};
constexpr double kNearPx = 3.0;

scenes::TScene render(scenes::TJoint joint, const scenes::TLook& look) {
  scenes::TSceneParams params;
  params.joint = joint;
  params.seed = 7;
  params.look = look;
  return scenes::renderScene(params);
}

scenes::TLook noisyLook() {
  scenes::TLook look;
  look.noiseSigma = 12.0;
  look.background = 30.0;
  return look;
}

scenes::TLook thickLook() {
  scenes::TLook look;
  look.peak = look.rootPeak = 400.0;
  look.fwhmPx = 54.0;
  look.rootFwhmPx = 3.0;
  look.noiseSigma = 3.0;
  return look;
}

scenes::TLook texturedLook() {
  scenes::TLook look;
  look.background = 60.0;
  look.texture = 30.0;
  look.noiseSigma = 6.0;
  return look;
}

// Of the columns in which the stripe is visible.
scenes::TScore score(const scenes::TScene& scene) {
  scenes::TScore score;
  for (const double y : scene.truth.centreY) score.frames += std::isnan(y) ? 0 : 1;
  for (const weld::TRidgePoint& ridge : weld::extractRidgeCentres(scene.image, kSettings, weld::heapMemory())) {
    const double truth = scene.truth.centreY[static_cast<std::size_t>(ridge.point.x)];
    const double error = std::abs(static_cast<double>(ridge.point.y) - truth);
    if (!(error <= kNearPx)) continue;
    ++score.found;
    score.errorsPx.push_back(error);
  }
  return score;
}

double meanOf(const std::vector<double>& values) {
  return values.empty() ? 0.0
                        : std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

void ridgeCentres(benchmark::State& state, scenes::TJoint joint, const scenes::TLook& look) {
  const scenes::TScene scene = render(joint, look);
  const scenes::TScore found = score(scene);
  if (found.found < 0.98 * found.frames) {
    state.SkipWithError("the stripe was not found");
    return;
  }
  bench::runAgainstCopy(state, scene.image, [&] {
    benchmark::DoNotOptimize(weld::extractRidgeCentres(scene.image, kSettings, weld::heapMemory()));
  });
  state.counters["meanErrorPx"] = meanOf(found.errorsPx);
}

using scenes::TJoint;

BENCHMARK_CAPTURE(ridgeCentres, clean, TJoint::corner, scenes::TLook{})
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(ridgeCentres, noise, TJoint::corner, noisyLook())
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(ridgeCentres, thick, TJoint::vGroove, thickLook())
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(ridgeCentres, texture, TJoint::lap, texturedLook())
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(ridgeCentres, blank, TJoint::blank, noisyLook())->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
