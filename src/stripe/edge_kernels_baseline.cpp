#include "stripe/edge_kernels.inl.h"

namespace weld {

const TEdgeKernels kBaselineEdgeKernels{markBlocks, pairStripeEdges};

}  // namespace weld
