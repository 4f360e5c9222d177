// The work on whole rows of pixels and points, written once in vector code and compiled per instruction set.
#pragma once

#include "support/kernels/contrast_rows.h"
#include "support/kernels/edge_kernels.h"
#include "support/kernels/line_rating.h"
#include "support/kernels/ridge_rows.h"
#include "support/kernels/weighted_moments.h"

namespace weld {

struct TKernels {
  TEdgeKernels edges;
  TRidgeRows ridgeRows;
  zelFit::TLineRating lineRating;
  TContrastRows contrastRows;
  TMomentKernels moments;
};

extern const TKernels kBaselineKernels;  // what every processor of the architecture can do
extern const TKernels kAvx2Kernels;      // x86-64 only

// Whether kernels compiled for AVX2 may run.
bool hasAvx2();

// The fastest ones that this processor runs. All give the same results.
const TKernels& kernels();

}  // namespace weld
