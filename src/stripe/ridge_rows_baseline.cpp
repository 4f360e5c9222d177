#include "stripe/ridge_rows.inl.h"

namespace weld {

const TRidgeRows kBaselineRidgeRows{pairColumns, addRows, halveSums, halveSumsAndColumns, respond, findMaxima};

}  // namespace weld
