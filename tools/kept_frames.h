// All frames of a run in memory, decoded once, for commands that look at them again and again.
#pragma once

#include "tools/shared_options.h"

#include <vector>

namespace tool {

// The frames as searched, with a progress bar. Throws an input error when they take more memory than 4 GiB, and
// the error of a stop signal.
std::vector<TFrame> keepFrames(const TFrameOptions& options);

}  // namespace tool
