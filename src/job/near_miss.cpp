#include "job/near_miss.h"

#include <algorithm>
#include <iterator>
#include <numeric>

namespace weld {

namespace {

constexpr int kMaxSlips = 2;                 // letters
constexpr std::size_t kMinBeginning = 4;     // letters of a name that is cut off
constexpr std::size_t kMaxNameLetters = 64;  // of what can be a slip of anything

std::string digitsOf(const std::string& text) {
  std::string digits;
  std::copy_if(text.begin(), text.end(), std::back_inserter(digits), [](char c) { return c >= '0' && c <= '9'; });
  return digits;
}

// Letters to insert, leave out or change to make one text of the other (the distance of Levenshtein).
int slipsBetween(const std::string& a, const std::string& b) {
  std::vector<int> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 0; i < a.size(); ++i) {
    int diagonal = row[0];
    row[0] = static_cast<int>(i) + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const int changed = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string bareName(const std::string& text) {
  std::string letters;
  for (const char c : text) {
    if (c != '-' && c != '_' && c != '.') {
      letters += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
  }
  return letters;
}

bool isNearMiss(const std::string& typed, const std::string& name) {
  const std::string a = bareName(typed);
  const std::string b = bareName(name);
  if (a.size() > kMaxNameLetters || digitsOf(a) != digitsOf(b)) return false;
  const bool isBeginning = a.size() >= kMinBeginning && b.compare(0, a.size(), a) == 0;
  return isBeginning || slipsBetween(a, b) <= kMaxSlips;
}

std::string listOf(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

}  // namespace weld
