// Times measured beside copying the frame, so that whatever else the machine does meets both.
#pragma once

#include <opencv2/core.hpp>

#include <functional>
#include <vector>

namespace bench {

using TWork = std::function<void()>;

// Medians, in microseconds.
struct TTiming {
  double workUs = 0.0;
  double copyUs = 0.0;  // cv::Mat::copyTo of the frame, timed right before each run of the work

  double timesCopy() const { return workUs / copyUs; }
};

// The works take turns in short blocks; every run of a work follows a timed copy. One timing per work.
std::vector<TTiming> measureAgainstCopy(const cv::Mat& frame, const std::vector<TWork>& works);

// Processor time of the thread.
double microsecondsOf(const TWork& work);

double median(std::vector<double> values);

}  // namespace bench
