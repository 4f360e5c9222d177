// Compiled with -mavx2. The universal intrinsics of an application follow SSE2 unless told otherwise; the
// mode gives their functions a namespace of their own.
#ifdef __AVX2__

#include <immintrin.h>

#define CV_SSE3 1
#define CV_SSSE3 1
#define CV_SSE4_1 1
#define CV_SSE4_2 1
#define CV_AVX 1
#define CV_AVX2 1
#define CV_CPU_DISPATCH_MODE weld_avx2

#include "stripe/block_marks.inl.h"
#include "stripe/edge_pairing.inl.h"

namespace weld {

const TEdgeKernels kAvx2EdgeKernels{markBlocks, pairStripeEdges};

}  // namespace weld

#endif
