// The demonstration's report page.
#pragma once

#include <filesystem>

namespace tool {

// Tracks a simulated lap seam with what goes wrong on a shop floor, and writes the report about it.
void writeDemoReport(const std::filesystem::path& page);

}  // namespace tool
