// Options of the search by contrast that several commands have in common.
#pragma once

#include "zelWeldDetect.h"

#include <CLI/CLI.hpp>

#include <string>

namespace tool {

// As typed.
struct TContrastChoice {
  std::string polarity = "automatic";
  TContrastSearch search;
};

// Declares --polarity, --direction, --tolerance and --min-confidence.
void addContrastOptions(CLI::App& command, TContrastChoice& choice);

// As understood. Throws a usage error that names the option.
TContrastSearch contrastOf(const TContrastChoice& choice);

// "dark", "bright", "edge", "automatic".
const char* nameOf(TSeamPolarity polarity);

}  // namespace tool
