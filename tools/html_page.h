// Pages that open without a network: text, style, script, charts and data in one file.
#pragma once

#include <string>
#include <string_view>

namespace tool {

// What one kind of page has of its own.
struct TPageForm {
  std::string_view title;
  std::string_view body;    // HTML without data
  std::string_view script;  // fills the body from the data
};

// The whole page. The data is JSON text in UTF-8.
std::string htmlPage(const TPageForm& form, const std::string& dataJson);

}  // namespace tool
