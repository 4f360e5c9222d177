#include "timing.h"

#include <algorithm>
#include <ctime>
#include <utility>

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace bench {

namespace {

constexpr int kRounds = 25;
constexpr int kRunsPerBlock = 20;
constexpr double kLongestBlockUs = 15e3;  // a slow work gets fewer runs

struct TSamples {
  std::vector<double> workUs;
  std::vector<double> copyUs;

  double spentUs() const { return workUs.back() + copyUs.back(); }
  TTimes times(double share) const { return {quantile(workUs, share), quantile(copyUs, share)}; }
};

double cpuMicroseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) * 1e-3;
}

void flush(const cv::Mat& frame) {
#ifdef __x86_64__
  constexpr std::size_t kCacheLine = 64;
  for (int row = 0; row < frame.rows; ++row) {
    for (std::size_t at = 0; at < frame.cols * frame.elemSize(); at += kCacheLine)
      _mm_clflush(frame.ptr(row) + at);
  }
  _mm_mfence();
#else
  static_cast<void>(frame);
#endif
}

// The first copy of a block is not counted: what ran before it has left other things in the caches.
void runWarm(const TWork& copy, const TWork& work, TSamples& samples) {
  double spentUs = 0.0;
  for (int run = 0; run < kRunsPerBlock && spentUs < kLongestBlockUs; ++run) {
    copy();
    samples.copyUs.push_back(microsecondsOf(copy));
    samples.workUs.push_back(microsecondsOf(work));
    spentUs += samples.spentUs();
  }
}

void runCold(const cv::Mat& frame, const TWork& copy, const TWork& work, TSamples& samples) {
  double spentUs = 0.0;
  for (int run = 0; run < kRunsPerBlock && spentUs < kLongestBlockUs; ++run) {
    flush(frame);
    samples.copyUs.push_back(microsecondsOf(copy));
    flush(frame);
    samples.workUs.push_back(microsecondsOf(work));
    spentUs += samples.spentUs();
  }
}

}  // namespace

std::vector<TTiming> measureAgainstCopy(const cv::Mat& frame, const std::vector<TWork>& works, double share) {
  cv::Mat target;
  const TWork copy = [&] { frame.copyTo(target); };
  std::vector<TSamples> warm(works.size());
  std::vector<TSamples> cold(works.size());
  for (int round = 0; round < kRounds; ++round) {
    for (std::size_t i = 0; i < works.size(); ++i) {
      runWarm(copy, works[i], warm[i]);
      runCold(frame, copy, works[i], cold[i]);
    }
  }
  std::vector<TTiming> timings;
  for (std::size_t i = 0; i < works.size(); ++i) timings.push_back({warm[i].times(share), cold[i].times(share)});
  return timings;
}

// Time of the processor, not of the clock on the wall: on a busy machine a long work is interrupted more often
// than a short one.
double microsecondsOf(const TWork& work) {
  const double start = cpuMicroseconds();
  work();
  return cpuMicroseconds() - start;
}

double quantile(std::vector<double> values, double share) {
  if (values.empty()) return 0.0;
  const auto at = values.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size()));
  std::nth_element(values.begin(), at, values.end());
  return *at;
}

double median(std::vector<double> values) {
  return quantile(std::move(values), 0.5);
}

}  // namespace bench
