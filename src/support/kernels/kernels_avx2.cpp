#ifdef __AVX2__

#include "support/kernels/avx2_mode.inl.h"

#include "support/kernels/all_kernels.inl.h"

namespace weld {

const TKernels kAvx2Kernels = kAllKernels;

}  // namespace weld

#endif
