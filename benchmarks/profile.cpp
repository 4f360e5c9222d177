// Profile engine on lists of 1,280 centres: time of a first fit and of a tracked one, and beside it the median
// error of the root (counter `rootPx`). A joint that is not found is reported as an error, not timed.
#include "profile/profile_engine.h"
#include "scenes/made_joint.h"
#include "support/arena.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using weld::TProfileFit;

constexpr int kScenes = 40;
constexpr std::uint64_t kSeed = 900000;
constexpr double kLimitPx = 3.0;
constexpr std::size_t kArenaBytes = std::size_t{8} << 20U;

struct TScene {
  made::TJoint joint;
  TProfileFit fit;
};

TProfileFit fit(weld::TArena& arena, const made::TJoint& joint) {
  std::pmr::memory_resource* const memory = (arena.restart(), &arena);
  return weld::fitProfile({joint.points, {}, 0.0, memory}, weld::profilesOf(joint.weldType), {}, memory);
}

TProfileFit track(weld::TArena& arena, const TScene& scene) {
  std::pmr::memory_resource* const memory = (arena.restart(), &arena);
  return weld::trackProfile({scene.joint.points, {}, 0.0, memory}, scene.fit, {}, memory);
}

// range: type of the weld, level
template <typename TCall>
void measure(benchmark::State& state, TCall call) {
  weld::TArena arena;
  arena.reserve(kArenaBytes);
  std::vector<TScene> scenes;
  std::vector<double> errors;
  for (std::uint64_t seed = kSeed; scenes.size() < kScenes; ++seed) {
    const auto type = static_cast<TWeldType>(state.range(0));
    TScene scene{made::makeJoint(type, static_cast<made::TLevel>(state.range(1)), seed), {}};
    if (scene.joint.isHard) continue;
    scene.fit = fit(arena, scene.joint);
    const cv::Point2d miss = scene.fit.feature(TFeature::root).pos - scene.joint.at(TFeature::root).pos;
    if (scene.fit.isFound()) errors.push_back(std::hypot(miss.x, miss.y));
    if (scene.fit.isFound()) scenes.push_back(scene);
  }
  std::sort(errors.begin(), errors.end());
  state.counters["rootPx"] = errors[errors.size() / 2];
  if (errors[errors.size() / 2] > kLimitPx) state.SkipWithError("the roots are off");
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(call(arena, scenes[next]));
    next = (next + 1) % scenes.size();
  }
}

void fitFirst(benchmark::State& state) {
  measure(state, [](weld::TArena& arena, const TScene& scene) { return fit(arena, scene.joint); });
}
void fitTracked(benchmark::State& state) {
  measure(state, track);
}
BENCHMARK(fitFirst)->ArgsProduct({{6, 7, 5, 8, 9}, {0, 1}})->Unit(benchmark::kMicrosecond);
BENCHMARK(fitTracked)->ArgsProduct({{6, 7, 5, 8, 9}, {0, 1}})->Unit(benchmark::kMicrosecond);

}  // namespace
