#include "stripe/ridge_rows.inl.h"

namespace weld {

const TRidgeRows kBaselineRidgeRows{pairColumns, halveRows, halveBoth, respond, findMaxima};

}  // namespace weld
