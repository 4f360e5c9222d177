#include "support/kernels/all_kernels.inl.h"

namespace weld {

const TKernels kBaselineKernels = kAllKernels;

}  // namespace weld
