// The demonstration's report page and frames.
#pragma once

#include <filesystem>

namespace tool {

// Tracks a simulated lap seam with what goes wrong on a shop floor. Writes the report about it, report.html, and
// into frames/ the frames around the longest loss, for experiments.
void writeDemoReport(const std::filesystem::path& folder);

}  // namespace tool
