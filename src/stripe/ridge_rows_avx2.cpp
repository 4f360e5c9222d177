#ifdef __AVX2__

#include "support/avx2_mode.inl.h"

#include "stripe/ridge_rows.inl.h"

namespace weld {

const TRidgeRows kAvx2RidgeRows{pairColumns, addRows, halveSums, halveSumsAndColumns, respond, findMaxima};

}  // namespace weld

#endif
