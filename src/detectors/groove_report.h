// What a groove that was laid over the stripe tells the trace.
#pragma once

#include "profile/profile_fit.h"
#include "trace/trace.h"

namespace weld {

// Its elements as pieces of the attempt, and its points, found or refused.
void reportGroove(const TProfileFit& fit, const TTrace& trace);

}  // namespace weld
