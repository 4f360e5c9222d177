#include "stripe/edge_kernels.h"

#include <opencv2/core/utility.hpp>

namespace weld {

const TEdgeKernels& chooseEdgeKernels() {
#ifdef __x86_64__
  if (cv::checkHardwareSupport(CV_CPU_AVX2)) return kAvx2EdgeKernels;
#endif
  return kBaselineEdgeKernels;
}

}  // namespace weld
