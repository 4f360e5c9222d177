// The report page around its data.
#pragma once

#include <string>

namespace tool {

// The whole HTML page with these data, JSON text in UTF-8, in it.
std::string reportPage(const std::string& dataJson);

}  // namespace tool
