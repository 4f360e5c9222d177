// The files that the pages of report, sweep and compare are made of, embedded when the program is built
// (tools/report/embed.cmake).
#pragma once

#include <string_view>

namespace tool::asset {

extern const std::string_view shell;  // what all pages have; places to fill are written {{name}}
extern const std::string_view style;
extern const std::string_view reportBody;
extern const std::string_view reportScript;
extern const std::string_view sweepBody;
extern const std::string_view sweepScript;
extern const std::string_view compareBody;
extern const std::string_view compareScript;
extern const std::string_view chartStyle;  // of the chart library
extern const std::string_view chartScript;
extern const std::string_view chartLicence;

}  // namespace tool::asset
