// Pages that open without a network: form, style, script, charts and data in one file.
#pragma once

#include <string>
#include <string_view>

namespace tool {

// The whole HTML page.
//   form      HTML with places {{style}}, {{script}}, {{chart-style}}, {{chart-script}}, {{chart-licence}},
//   {{data}} script    what fills the page from its data dataJson  the data, JSON text in UTF-8
std::string htmlPage(std::string_view form, std::string_view script, const std::string& dataJson);

}  // namespace tool
