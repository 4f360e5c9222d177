// Small pieces of text that several commands write.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool {

// The number with exactly so many decimals.
std::string fixed(double value, int decimals);

// The number with at most six significant digits and no trailing zeros.
std::string plain(double value);

// The text followed by blanks up to that width, by one at least.
std::string padded(const std::string& text, std::size_t width);

// A text in a table, on one line; of one that is wider the end: it says more of a file's name than its beginning.
std::string shortened(const std::string& text, std::size_t width);

// The text as a field of CSV, in quotes where it needs them.
std::string csvText(const std::string& text);

// The text with spaces in place of line breaks and other control characters.
std::string onOneLine(std::string text);

// A thousandth is enough of a pixel or a millisecond.
double rounded(double value, double steps = 1e3);

std::string join(const std::vector<std::string>& words, std::string_view separator);

// Reads the whole text as a number. False when any of it is not part of the number.
bool parseNumber(std::string_view text, double& value);

// Reads `count` numbers parted by `separator`, for example "3,4". An empty list when the text differs.
std::vector<double> parseNumbers(std::string_view text, char separator, std::size_t count);

}  // namespace tool
