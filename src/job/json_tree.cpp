#include "job/json_tree.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

namespace weld {

namespace {

using nlohmann::json;
using TKind = TJsonNode::TKind;

constexpr std::size_t kMaxBytes = 1 << 20;
constexpr std::size_t kMaxLevels = 16;
constexpr int kMaxValues = 1000;

// Steps through the text and leaves behind how far the parser has read.
class TFollowedChar {
public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  TFollowedChar(const char* place, const char*& reach) : at(place), reached(&reach) {}
  reference operator*() const { return *at; }
  TFollowedChar& operator++() {
    *reached = ++at;
    return *this;
  }
  bool operator==(const TFollowedChar& other) const { return at == other.at; }
  bool operator!=(const TFollowedChar& other) const { return at != other.at; }

private:
  const char* at;
  const char** reached;
};

// Takes what the parser finds; false ends the reading.
class TTreeBuilder {
public:
  TTreeBuilder(std::string_view text, const char*& reach) : reached(reach), counted(text.data()) {}

  bool null() { return add(TKind::null, "null"); }
  bool boolean(bool value) { return add(TKind::boolean, value ? "true" : "false"); }
  bool number_integer(std::int64_t value) { return add(TKind::number, std::to_string(value)); }
  bool number_unsigned(std::uint64_t value) { return add(TKind::number, std::to_string(value)); }
  bool number_float(double /*value*/, const std::string& written) { return add(TKind::number, written); }
  // cppcheck-suppress constParameter ; the parser hands over its own text
  bool string(std::string& value) { return add(TKind::text, value); }
  bool binary(json::binary_t& /*value*/) { return false; }
  bool start_object(std::size_t /*size*/) { return open(TKind::object); }
  bool start_array(std::size_t /*size*/) { return open(TKind::list); }
  bool end_object() { return close(); }
  bool end_array() { return close(); }

  bool key(const std::string& name) {
    keyLine = line();
    nextKey = name;
    const std::vector<TJsonNode>& members = opened.back()->items;
    const auto isSame = [&](const TJsonNode& member) { return member.key == name; };
    return std::none_of(members.begin(), members.end(), isSame) || refuse("names " + name + " twice");
  }

  bool parse_error(std::size_t /*position*/, const std::string& token, const json::exception& error) {
    constexpr int kTooLarge = 406;
    if (error.id == kTooLarge) return refuse("the number " + token + " is too large");
    // "[json.exception...] parse error at line 3, column 1: syntax error while parsing value - unexpected '}'"
    const std::string words = error.what();
    const std::size_t cut = words.find(": ");
    return refuse("no valid JSON: " + (cut == std::string::npos ? words : words.substr(cut + 2)));
  }

  TJsonTree result() && { return {std::move(root), std::move(problem)}; }

private:
  // Line of the last character read; a number is known only at the character behind it.
  int line() {
    if (reached > counted) {
      lines += static_cast<int>(std::count(counted, reached - 1, '\n'));
      counted = reached - 1;
    }
    return lines;
  }

  bool refuse(const std::string& words) {
    problem = atLine(line(), words);
    return false;
  }

  bool add(TKind kind, const std::string& text) {
    if (++values > kMaxValues) return refuse("holds more than " + std::to_string(kMaxValues) + " values");
    const bool isMember = !opened.empty() && opened.back()->kind == TKind::object;
    TJsonNode node{kind, isMember ? keyLine : line(), isMember ? nextKey : "", text, {}};
    if (opened.empty()) {
      root = std::move(node);
    } else {
      opened.back()->items.push_back(std::move(node));
    }
    return true;
  }

  bool open(TKind kind) {
    if (opened.size() == kMaxLevels)
      return refuse("nested in more than " + std::to_string(kMaxLevels) + " levels");
    if (!add(kind, "")) return false;
    opened.push_back(opened.empty() ? &root : &opened.back()->items.back());
    return true;
  }

  bool close() {
    opened.pop_back();
    return true;
  }

  const char*& reached;
  const char* counted;  // lines are counted up to here
  int lines = 1;
  int keyLine = 1;
  std::string nextKey;
  int values = 0;
  TJsonNode root;
  std::vector<TJsonNode*> opened;  // from the root; only the last one grows, so the others stay where they are
  std::string problem;
};

}  // namespace

std::string atLine(int line, const std::string& words) {
  return "line " + std::to_string(line) + ": " + words;
}

std::string describe(const TJsonNode& node) {
  switch (node.kind) {
    case TKind::text:
      return '"' + node.text + '"';
    case TKind::list:
      return "a list";
    case TKind::object:
      return "an object";
    default:
      return node.text;
  }
}

TJsonTree readJson(std::string_view text) {
  if (text.size() > kMaxBytes) return {{}, "holds more than 1 MiB"};
  const char* reached = text.data();
  TTreeBuilder builder(text, reached);
  const char* const begin = text.data();
  json::sax_parse(TFollowedChar(begin, reached), TFollowedChar(begin + text.size(), reached), &builder);
  return std::move(builder).result();
}

}  // namespace weld
