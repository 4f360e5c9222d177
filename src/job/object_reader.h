// Reads the members of a JSON object into fields. One list of fields, written as a function over a reader or a
// writer, serves both ways: job_fields.h.
#pragma once

#include "job/json_tree.h"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

struct TJointRange;

namespace weld {

// An enumerator and its name.
template <typename T>
struct TNamed {
  T value;
  const char* name;
};

template <typename T>
const char* nameIn(const std::vector<TNamed<T>>& names, T value) {
  for (const TNamed<T>& row : names) {
    if (row.value == value) return row.name;
  }
  return "unknown";
}

// The numbers that a field takes. A field with `hasNever` takes null as well, for infinity.
struct TNumberRule {
  double min = std::numeric_limits<double>::lowest();
  bool isMinExcluded = false;
  bool hasNever = false;
};

class TObjectReader {
public:
  // The first problem of the whole text stays in `problem`. `prefix` goes before keys: "elements[2].".
  TObjectReader(const TJsonNode& object, std::string prefix, std::string& problem);
  // Refuses members that nobody asked for.
  ~TObjectReader();
  TObjectReader(const TObjectReader&) = delete;
  TObjectReader& operator=(const TObjectReader&) = delete;

  // Each leaves its field as it is when the object does not have the key.
  void flag(const char* key, bool& field);
  void text(const char* key, std::string& field);
  void number(const char* key, double& field, TNumberRule rule);
  void number(const char* key, float& field, TNumberRule rule);
  void place(const char* key, float& field);  // null: not a number
  void count(const char* key, std::int32_t& field, std::int32_t least);
  void range(const char* key, TJointRange& field);  // [least, most]; null: no limit

  template <typename T>
  void choice(const char* key, T& field, const std::vector<TNamed<T>>& names) {
    const TJsonNode* const member = find(key);
    if (member == nullptr) return;
    std::vector<std::string> all;
    for (const TNamed<T>& row : names) {
      all.emplace_back(row.name);
      if (member->kind == TJsonNode::TKind::text && member->text == row.name) {
        field = row.value;
        return;
      }
    }
    refuseChoice(*member, all);
  }

  // `read` takes a reader of the member.
  template <typename TRead>
  void object(const char* key, TRead read) {
    const TJsonNode* const member = findOf(key, TJsonNode::TKind::object);
    if (member == nullptr) return;
    TObjectReader reader(*member, prefix + key + ".", problem);
    read(reader);
  }

  // `read` takes a reader and an entry of the list.
  template <typename T, typename TRead>
  void list(const char* key, std::vector<T>& field, TRead read) {
    const TJsonNode* const member = findOf(key, TJsonNode::TKind::list);
    if (member == nullptr) return;
    field.clear();
    for (const TJsonNode& item : member->items) {
      const std::string name = prefix + key + "[" + std::to_string(field.size()) + "]";
      if (!isOfKind(item, name, TJsonNode::TKind::object)) return;
      TObjectReader reader(item, name + ".", problem);
      read(reader, field.emplace_back());
    }
  }

  // The member of that key; null when there is none. From then on it counts as asked for.
  const TJsonNode* find(const char* key);
  const TJsonNode* findOf(const char* key, TJsonNode::TKind kind);
  const TJsonNode& whole() const { return node; }

  void refuse(const TJsonNode& at, const std::string& words);
  // "maxJumpPx must be a number, not true"
  void refuseValue(const TJsonNode& member, const std::string& key, const std::string& right);

private:
  bool isOfKind(const TJsonNode& member, const std::string& key, TJsonNode::TKind kind);
  void refuseChoice(const TJsonNode& member, const std::vector<std::string>& names);

  const TJsonNode& node;
  std::string prefix;
  std::string& problem;
  std::vector<std::string> known;
};

}  // namespace weld
