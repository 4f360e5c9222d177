// Options of the tracker that several commands have in common.
#pragma once

#include "tools/contrast_options.h"

#include "zelWeldDetect.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <string>

namespace tool {

// As typed.
struct TTrackerChoice {
  bool isFirstOnly = false;
  bool isExact = false;
  std::string extraction;  // empty: the tracker's own
  TTrackerOptions settings;
  std::string source = "stripe";
  TContrastChoice contrast;
};

// Declares --first-only, --exact, --extraction, --margin, --max-jump, --hold, --source, --look-at and the options
// of the search by contrast.
void addTrackerOptions(CLI::App& command, TTrackerChoice& choice);

// As understood. Throws a usage error that names the option.
TTrackerOptions trackerOptionsOf(const TTrackerChoice& choice);

// "edgePairs", "ridge", "automatic".
const char* nameOf(TStripeExtraction extraction);

// Each setting as an object of name, value, default, unit, range and meaning.
nlohmann::ordered_json describeTracker(const TTrackerOptions& options);

}  // namespace tool
