// Times work beside copying the same frame: both take turns, so that whatever else the machine does meets both.
#pragma once

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

namespace bench {

// 0 without values.
inline double median(std::vector<double> values) {
  if (values.empty()) return 0.0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

template <typename TWork>
double secondsOf(TWork work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Leaves the ratio of the medians in the counter `timesCopyTo` and the copy's median in `copyToUs`.
template <typename TWork>
void runAgainstCopy(benchmark::State& state, const cv::Mat& frame, TWork work) {
  cv::Mat copy;
  std::vector<double> copySeconds;
  std::vector<double> workSeconds;
  for (auto _ : state) {
    copySeconds.push_back(secondsOf([&] { frame.copyTo(copy); }));
    benchmark::DoNotOptimize(copy.data);
    workSeconds.push_back(secondsOf(work));
    state.SetIterationTime(workSeconds.back());
  }
  state.counters["copyToUs"] = median(copySeconds) * 1e6;
  state.counters["timesCopyTo"] = median(workSeconds) / median(copySeconds);
}

}  // namespace bench
