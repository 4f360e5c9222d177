#include "tools/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace tool {

std::string fixed(double value, int decimals) {
  std::array<char, 64> buffer{};
  const int length = std::snprintf(buffer.data(), buffer.size(), "%.*f", decimals, value);
  return {buffer.data(), static_cast<std::size_t>(length)};
}

std::string plain(double value) {
  std::array<char, 64> buffer{};
  const int length = std::snprintf(buffer.data(), buffer.size(), "%g", value);
  return {buffer.data(), static_cast<std::size_t>(length)};
}

std::string padded(const std::string& text, std::size_t width) {
  return text + std::string(text.size() < width ? width - text.size() : 1, ' ');
}

std::string shortened(const std::string& text, std::size_t width) {
  return onOneLine(text.size() <= width ? text : "..." + text.substr(text.size() - width + 3));
}

std::string csvText(const std::string& text) {
  if (text.find_first_of(",\"\n\r") == std::string::npos) {
    return text;
  }
  std::string quoted = "\"";
  for (const char c : text) {
    quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  }
  return quoted + "\"";
}

std::string onOneLine(std::string text) {
  const auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7F; };
  const auto isHighControl = [](unsigned char c) { return c >= 0x80 && c < 0xA0; };  // behind the byte C2 of UTF-8
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (isControl(text[i])) {
      text[i] = ' ';
    } else if (text[i] == '\xC2' && i + 1 < text.size() && isHighControl(text[i + 1])) {
      text.replace(i, 2, "  ");
    }
  }
  return text;
}

double rounded(double value, double steps) {
  return std::round(value * steps) / steps;
}

std::string join(const std::vector<std::string>& words, std::string_view separator) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    text += i == 0 ? "" : separator;
    text += words[i];
  }
  return text;
}

bool parseNumber(std::string_view text, double& value) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end;
}

std::vector<double> parseNumbers(std::string_view text, char separator, std::size_t count) {
  std::vector<double> values;
  while (values.size() < count) {
    const std::size_t cut = text.find(separator);
    double value = 0.0;
    if (!parseNumber(text.substr(0, cut), value)) {
      return {};
    }
    values.push_back(value);
    if (cut == std::string_view::npos) {
      text = {};
      break;
    }
    text.remove_prefix(cut + 1);
  }
  return values.size() == count && text.empty() ? values : std::vector<double>{};
}

}  // namespace tool
