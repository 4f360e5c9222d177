#include "support/kernels/kernels.h"

#include <opencv2/core/utility.hpp>

namespace weld {

bool hasAvx2() {
#ifdef __x86_64__
  return cv::checkHardwareSupport(CV_CPU_AVX2);
#else
  return false;
#endif
}

const TKernels& kernels() {
#ifdef __x86_64__
  if (hasAvx2()) return kAvx2Kernels;
#endif
  return kBaselineKernels;
}

}  // namespace weld
