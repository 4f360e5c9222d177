#include "stripe/edge_kernels.h"

#include "support/processor.h"

namespace weld {

const TEdgeKernels& chooseEdgeKernels() {
#ifdef __x86_64__
  if (hasAvx2()) return kAvx2EdgeKernels;
#endif
  return kBaselineEdgeKernels;
}

}  // namespace weld
