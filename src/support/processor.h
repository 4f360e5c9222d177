// What the processor can do.
#pragma once

#include <opencv2/core/utility.hpp>

namespace weld {

// Whether kernels compiled for AVX2 may run. Kernels of all kinds give the same results.
inline bool hasAvx2() {
#ifdef __x86_64__
  return cv::checkHardwareSupport(CV_CPU_AVX2);
#else
  return false;
#endif
}

}  // namespace weld
