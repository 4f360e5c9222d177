// A JSON text as a tree that knows its lines. Small on purpose: jobs are small, and texts come from anywhere.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace weld {

struct TJsonNode {
  enum class TKind { null, boolean, number, text, list, object };

  TKind kind = TKind::null;
  int line = 0;                  // 1, 2, ...; of a member that of its key
  std::string key;               // of a member of an object
  std::string text;              // the content of a text; numbers, true and false as they are written
  std::vector<TJsonNode> items;  // of a list or an object, in the text's order
};

struct TJsonTree {
  TJsonNode root;
  std::string problem;  // "line 3: ..."; empty: none
};

// Refused, beside what is no JSON: more than 1 MiB, 16 levels or 1,000 values, and a key that an object has twice.
TJsonTree readJson(std::string_view text);

// "line 3: " and the words.
std::string atLine(int line, const std::string& words);

// A value for a message: as it is written; of a list or an object the kind.
std::string describe(const TJsonNode& node);

}  // namespace weld
