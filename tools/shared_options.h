// Options that several commands have in common: which frames, how each is prepared, which job.
#pragma once

#include "tools/frame_source.h"
#include "tools/image_prep.h"
#include "tools/param_json.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tool {

// As typed. Empty texts are not given.
struct TFrameOptions {
  std::vector<std::string> inputs;
  std::string region;
  std::string rotation;
  std::string channel;
  std::string range;  // "first:last"
  double maxMegapixels = kMaxMegapixels;
};

// Declares INPUT, --frames, --max-megapixels, and the options of the preparation.
void addFrameOptions(CLI::App& command, TFrameOptions& options);

// Declares --roi, --rotate and --channel.
void addPreparationOptions(CLI::App& command, TFrameOptions& options);

// Declares --type, --position, --job, also called --params, and --set.
void addParamOptions(CLI::App& command, TParamSource& source);

// As understood; what is not given is as in `base`. Throws a usage error that names the option.
TPreparation preparationOf(const TFrameOptions& options, const TPreparation& base = {});

// The frames of the inputs, or the range of them. Throws a usage or an input error.
TFrameSource framesOf(const TFrameOptions& options);

}  // namespace tool
