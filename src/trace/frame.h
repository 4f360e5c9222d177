// The frame at hand: the first argument of every stage, handed down and never stored.
#pragma once

#include "support/list.h"
#include "trace/trace.h"
#include "zelWeldTypes.h"

#include <opencv2/core.hpp>

namespace weld {

struct TFrame {
  const cv::Mat& image;  // 8-bit with 1, 3 (BGR) or 4 (BGRA) channels, checked
  const TWeldParams& params;
  TMemory* memory;  // of the lists that die with the frame
  TTrace trace;     // what the stages report to

  // The same frame for one of several ways to find the seam.
  TFrame inWay(const char* name) const { return {image, params, memory, trace.inWay(name)}; }
  // The same frame for what is asked beside: nothing of it is reported.
  TFrame inSilence() const { return {image, params, memory, {}}; }
};

// A frame that nobody reads along with, its lists on the heap.
inline TFrame heapFrame(const cv::Mat& image, const TWeldParams& params) {
  return {image, params, heapMemory(), {}};
}

}  // namespace weld
