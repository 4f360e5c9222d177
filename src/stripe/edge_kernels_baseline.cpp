#include "stripe/block_marks.inl.h"
#include "stripe/edge_pairing.inl.h"

namespace weld {

const TEdgeKernels kBaselineEdgeKernels{markBlocks, pairStripeEdges};

}  // namespace weld
