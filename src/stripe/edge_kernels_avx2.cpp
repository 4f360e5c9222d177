#ifdef __AVX2__

#include "support/avx2_mode.inl.h"

#include "stripe/block_marks.inl.h"
#include "stripe/edge_pairing.inl.h"

namespace weld {

const TEdgeKernels kAvx2EdgeKernels{markBlocks, pairStripeEdges};

}  // namespace weld

#endif
