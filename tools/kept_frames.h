// All frames of a run in memory, decoded once, for commands that look at them again and again.
#pragma once

#include "tools/seam_run.h"

#include <vector>

namespace tool {

struct TKeptFrames {
  std::vector<TFrame> frames;
  TReading reading;
};

// The frames as searched, or without an image, with a progress bar. Throws an input error when they take more
// memory than 4 GiB, and the error of a stop signal.
TKeptFrames keepFrames(const TFrameOptions& options, const TPreparation& preparation);

}  // namespace tool
