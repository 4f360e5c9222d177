// Options that several commands have in common: which frames, how each is prepared, which parameters.
#pragma once

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
};

// Declares INPUT, --roi, --rotate and --channel.
void addFrameOptions(CLI::App& command, TFrameOptions& options);

// Declares --type, --position, --params and --set.
void addParamOptions(CLI::App& command, TParamSource& source);

// As understood. Throws a usage error that names the option.
TPreparation preparationOf(const TFrameOptions& options);

}  // namespace tool
