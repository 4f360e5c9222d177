#include "stripe/ridge_rows.inl.h"

namespace weld {

const TRidgeRows kBaselineRidgeRows{pairColumns, respond, findMaxima};

}  // namespace weld
