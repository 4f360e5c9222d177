// Options that several commands have in common: which frames, how each is prepared, which parameters.
#pragma once

#include "tools/frame_source.h"
#include "tools/image_prep.h"
#include "tools/param_json.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace tool {

// As typed.
struct TFrameOptions {
  std::vector<std::string> inputs;
  std::string region;
  std::string rotation;
  std::string channel = "grey";
  std::string range;  // "first:last"
};

// Declares INPUT, --frames, --roi, --rotate and --channel.
void addFrameOptions(CLI::App& command, TFrameOptions& options);

// Declares --type, --position, --params and --set.
void addParamOptions(CLI::App& command, TParamSource& source);

// As understood. Throws a usage error that names the option.
TPreparation preparationOf(const TFrameOptions& options);

// The frames of the inputs, or the range of them. Throws a usage or an input error.
TFrameSource framesOf(const TFrameOptions& options);

}  // namespace tool
