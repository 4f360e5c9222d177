#include "timing.h"

#include <algorithm>
#include <ctime>

namespace bench {

namespace {

constexpr int kRounds = 25;
constexpr int kPairsPerBlock = 20;        // of a copy and a run of the work
constexpr double kLongestBlockUs = 15e3;  // a slow work gets fewer pairs

struct TSamples {
  std::vector<double> workUs;
  std::vector<double> copyUs;
};

double cpuMicroseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) * 1e-3;
}

// The first pair of a block is not counted: what ran before it has left other things in the caches.
void runBlock(const TWork& copy, const TWork& work, TSamples& samples) {
  copy();
  work();
  double spentUs = 0.0;
  for (int pair = 0; pair < kPairsPerBlock && spentUs < kLongestBlockUs; ++pair) {
    samples.copyUs.push_back(microsecondsOf(copy));
    samples.workUs.push_back(microsecondsOf(work));
    spentUs += samples.copyUs.back() + samples.workUs.back();
  }
}

}  // namespace

std::vector<TTiming> measureAgainstCopy(const cv::Mat& frame, const std::vector<TWork>& works) {
  cv::Mat target;
  const TWork copy = [&] { frame.copyTo(target); };
  std::vector<TSamples> samples(works.size());
  for (int round = 0; round < kRounds; ++round) {
    for (std::size_t i = 0; i < works.size(); ++i) runBlock(copy, works[i], samples[i]);
  }
  std::vector<TTiming> timings;
  for (const TSamples& s : samples) timings.push_back({median(s.workUs), median(s.copyUs)});
  return timings;
}

// Time of the processor, not of the clock on the wall: on a busy machine a long work is interrupted more often
// than a short one.
double microsecondsOf(const TWork& work) {
  const double start = cpuMicroseconds();
  work();
  return cpuMicroseconds() - start;
}

double median(std::vector<double> values) {
  if (values.empty()) return 0.0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace bench
