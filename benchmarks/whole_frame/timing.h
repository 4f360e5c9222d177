// Times measured beside copying the frame, so that whatever else the machine does meets both.
//
// Warm: call and copy each come right after a copy of the frame, so that both find the caches alike. A copy after
// a call is a fifth quicker where frame and copy just fill a cache, and would move the unit. Cold: the frame is
// flushed out of the caches before each, as a camera's memory controller delivers it.
#pragma once

#include <opencv2/core.hpp>

#include <functional>
#include <vector>

namespace bench {

using TWork = std::function<void()>;

// In microseconds.
struct TTimes {
  double workUs = 0.0;
  double copyUs = 0.0;  // cv::Mat::copyTo of the frame

  double timesCopy() const { return workUs / copyUs; }
};

struct TTiming : TTimes {  // warm
  TTimes cold;             // on other processors than x86-64 as the caches happen to be
};

// The works take turns in short blocks. One timing per work.
//   share  of the runs that are quicker than the time given; a small one leaves out what disturbed them
std::vector<TTiming> measureAgainstCopy(const cv::Mat& frame, const std::vector<TWork>& works, double share = 0.5);

// Processor time of the thread.
double microsecondsOf(const TWork& work);

// 0 without values.
double quantile(std::vector<double> values, double share);
double median(std::vector<double> values);

}  // namespace bench
