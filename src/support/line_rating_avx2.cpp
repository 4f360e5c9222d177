#ifdef __AVX2__

#include "support/avx2_mode.inl.h"

#include "support/line_rating.inl.h"

namespace zelFit {

const TLineRating kAvx2LineRating{sumTruncatedQuadratics};

}  // namespace zelFit

#endif
