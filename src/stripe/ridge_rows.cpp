#include "stripe/ridge_rows.h"

#include "support/processor.h"

namespace weld {

const TRidgeRows& chooseRidgeRows() {
#ifdef __x86_64__
  if (hasAvx2()) return kAvx2RidgeRows;
#endif
  return kBaselineRidgeRows;
}

}  // namespace weld
