// The files that a report page is made of, embedded when the program is built (tools/report/embed.cmake).
#pragma once

#include <string_view>

namespace tool::asset {

// The report and the sweep. Pages have places to fill, written {{name}}.
extern const std::string_view page;
extern const std::string_view script;
extern const std::string_view sweepPage;
extern const std::string_view sweepScript;
extern const std::string_view style;       // of both
extern const std::string_view chartStyle;  // of the chart library
extern const std::string_view chartScript;
extern const std::string_view chartLicence;

}  // namespace tool::asset
