#include "tools/html_page.h"

#include "tools/report_assets.h"

#include <map>
#include <string_view>

namespace tool {
namespace {

constexpr std::string_view kOpen = "{{";
constexpr std::string_view kClose = "}}";

// Text between tags.
std::string htmlText(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '<':
        escaped += "&lt;";
        break;
      case '&':
        escaped += "&amp;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

// JSON inside a script element: a "<" stands in texts only, where it may be written as an escape; so no text can
// end the element.
std::string scriptData(const std::string& json) {
  std::string escaped;
  escaped.reserve(json.size());
  for (const char c : json) {
    if (c == '<') {
      escaped += "\\u003c";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::string filled(std::string_view form, const std::map<std::string_view, std::string_view>& values) {
  std::string text;
  for (std::size_t open = form.find(kOpen); open != std::string_view::npos; open = form.find(kOpen)) {
    const std::size_t close = form.find(kClose, open);
    const std::size_t begin = open + kOpen.size();
    text += form.substr(0, open);
    text += values.at(form.substr(begin, close - begin));
    form.remove_prefix(close + kClose.size());
  }
  return text += form;
}

}  // namespace

std::string htmlPage(const TPageForm& form, const std::string& dataJson) {
  const std::string data = scriptData(dataJson);
  const std::string licence = htmlText(asset::chartLicence);
  return filled(asset::shell, {{"title", form.title},
                               {"chart-style", asset::chartStyle},
                               {"style", asset::style},
                               {"body", form.body},
                               {"chart-licence", licence},
                               {"data", data},
                               {"chart-script", asset::chartScript},
                               {"script", form.script}});
}

}  // namespace tool
