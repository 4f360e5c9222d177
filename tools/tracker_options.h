// Options of the tracker that several commands have in common.
#pragma once

#include "tools/contrast_options.h"

#include "zelWeldDetect.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace tool {

// As typed. Empty ones are not given.
struct TTrackerChoice {
  bool isFirstOnly = false;
  bool isExact = false;
  std::string extraction;
  std::optional<std::int32_t> guideMarginPx;
  std::optional<double> maxJumpPx;
  std::optional<std::int32_t> holdFrames;
  std::string source;
  std::optional<float> lookAtPx;
  TContrastChoice contrast;
};

// Declares --first-only, --exact, --extraction, --margin, --max-jump, --hold, --source, --look-at and the options
// of the search by contrast.
void addTrackerOptions(CLI::App& command, TTrackerChoice& choice);

// As understood; what is not given is as in `base`. Throws a usage error that names the option.
TTrackerOptions trackerOptionsOf(const TTrackerChoice& choice, const TTrackerOptions& base);

// Each setting as an object of name, value, default, unit, range and meaning.
nlohmann::ordered_json describeTracker(const TTrackerOptions& options);

}  // namespace tool
