#include "support/line_rating.h"

#include "support/processor.h"

namespace zelFit {

const TLineRating& chooseLineRating() {
#ifdef __x86_64__
  if (weld::hasAvx2()) return kAvx2LineRating;
#endif
  return kBaselineLineRating;
}

}  // namespace zelFit
