#include "support/line_rating.inl.h"

namespace zelFit {

const TLineRating kBaselineLineRating{sumTruncatedQuadratics};

}  // namespace zelFit
