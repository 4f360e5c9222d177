// Options of the search by contrast that several commands have in common.
#pragma once

#include "zelWeldDetect.h"

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace tool {

// As typed. Empty ones are not given.
struct TContrastChoice {
  std::string polarity;
  std::optional<float> directionDeg;
  std::optional<float> directionTolDeg;
  std::optional<float> minConfidence;
};

// Declares --polarity, --direction, --tolerance and --min-confidence.
void addContrastOptions(CLI::App& command, TContrastChoice& choice);

// As understood; what is not given is as in `base`. Throws a usage error that names the option.
TContrastSearch contrastOf(const TContrastChoice& choice, const TContrastSearch& base);

// "dark", "bright", "edge", "automatic".
const char* nameOf(TSeamPolarity polarity);

}  // namespace tool
