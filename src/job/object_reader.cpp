#include "job/object_reader.h"

#include "job/near_miss.h"
#include "zelWeldTemplate.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace weld {

namespace {

using TKind = TJsonNode::TKind;

double numberOf(const TJsonNode& node) {
  double value = 0.0;
  std::from_chars(node.text.data(), node.text.data() + node.text.size(), value);
  return value;
}

float narrowed(double value) {
  constexpr double kMost = std::numeric_limits<float>::max();
  return static_cast<float>(std::clamp(value, -kMost, kMost));
}

std::string wordsFor(const TNumberRule& rule) {
  std::string words = "a number";
  if (rule.isMinExcluded) words += " above " + std::to_string(static_cast<int>(rule.min));
  return words + (rule.hasNever ? ", or null for never" : "");
}

}  // namespace

TObjectReader::TObjectReader(const TJsonNode& object, std::string prefixOfKeys, std::string& firstProblem)
    : node(object), prefix(std::move(prefixOfKeys)), problem(firstProblem) {}

TObjectReader::~TObjectReader() {
  for (const TJsonNode& member : node.items) {
    if (std::find(known.begin(), known.end(), member.key) != known.end()) continue;
    const auto isMeant = [&](const std::string& key) { return isNearMiss(member.key, key); };
    const auto near = std::find_if(known.begin(), known.end(), isMeant);
    refuse(member, "unknown key '" + prefix + member.key +
                       "': " + (near == known.end() ? "use " + listOf(known) : "did you mean " + *near + "?"));
  }
}

const TJsonNode* TObjectReader::find(const char* key) {
  known.emplace_back(key);
  const auto isIt = [&](const TJsonNode& member) { return member.key == key; };
  const auto found = std::find_if(node.items.begin(), node.items.end(), isIt);
  return found == node.items.end() ? nullptr : &*found;
}

const TJsonNode* TObjectReader::findOf(const char* key, TKind kind) {
  const TJsonNode* const member = find(key);
  return member != nullptr && isOfKind(*member, prefix + key, kind) ? member : nullptr;
}

bool TObjectReader::isOfKind(const TJsonNode& member, const std::string& key, TKind kind) {
  static const std::vector<TNamed<TKind>> kNames = {{TKind::boolean, "true or false"},
                                                    {TKind::number, "a number"},
                                                    {TKind::text, "a text"},
                                                    {TKind::list, "a list"},
                                                    {TKind::object, "an object"}};
  if (member.kind != kind) refuseValue(member, key, nameIn(kNames, kind));
  return member.kind == kind;
}

void TObjectReader::flag(const char* key, bool& field) {
  const TJsonNode* const member = findOf(key, TKind::boolean);
  if (member != nullptr) field = member->text == "true";
}

void TObjectReader::text(const char* key, std::string& field) {
  const TJsonNode* const member = findOf(key, TKind::text);
  if (member != nullptr) field = member->text;
}

void TObjectReader::number(const char* key, double& field, TNumberRule rule) {
  const TJsonNode* const member = find(key);
  if (member == nullptr) return;
  const bool isNever = rule.hasNever && member->kind == TKind::null;
  const double value = isNever ? std::numeric_limits<double>::infinity() : numberOf(*member);
  const bool isNumber = isNever || member->kind == TKind::number;
  if (!isNumber || value < rule.min || (rule.isMinExcluded && value == rule.min)) {
    refuseValue(*member, prefix + key, wordsFor(rule));
    return;
  }
  field = value;
}

void TObjectReader::number(const char* key, float& field, TNumberRule rule) {
  auto value = static_cast<double>(field);
  number(key, value, rule);
  field = narrowed(value);
}

void TObjectReader::place(const char* key, float& field) {
  const TJsonNode* const member = find(key);
  if (member == nullptr) return;
  if (member->kind != TKind::number && member->kind != TKind::null) {
    refuseValue(*member, prefix + key, "a number, or null for none");
    return;
  }
  field = member->kind == TKind::null ? std::numeric_limits<float>::quiet_NaN() : narrowed(numberOf(*member));
}

void TObjectReader::count(const char* key, std::int32_t& field, std::int32_t least) {
  const TJsonNode* const member = find(key);
  if (member == nullptr) return;
  const double value = numberOf(*member);
  const bool isWhole = member->kind == TKind::number && value == std::trunc(value);
  if (!isWhole || value < least || value > std::numeric_limits<std::int32_t>::max()) {
    refuseValue(*member, prefix + key, "a whole number from " + std::to_string(least) + " upwards");
    return;
  }
  field = static_cast<std::int32_t>(value);
}

void TObjectReader::range(const char* key, TJointRange& field) {
  const TJsonNode* const member = find(key);
  if (member == nullptr) return;
  const auto isLimit = [](const TJsonNode& item) {
    return item.kind == TKind::number || item.kind == TKind::null;
  };
  const std::vector<TJsonNode>& items = member->items;
  if (member->kind != TKind::list || items.size() != 2 || !std::all_of(items.begin(), items.end(), isLimit)) {
    refuseValue(*member, prefix + key, "[least, most], either of them null for no limit");
    return;
  }
  if (items[0].kind == TKind::number) field.min = numberOf(items[0]);
  if (items[1].kind == TKind::number) field.max = numberOf(items[1]);
}

void TObjectReader::refuse(const TJsonNode& at, const std::string& words) {
  if (problem.empty()) problem = atLine(at.line, words);
}

void TObjectReader::refuseValue(const TJsonNode& member, const std::string& key, const std::string& right) {
  refuse(member, key + " must be " + right + ", not " + describe(member));
}

void TObjectReader::refuseChoice(const TJsonNode& member, const std::vector<std::string>& names) {
  refuseValue(member, prefix + member.key, "one of " + listOf(names));
}

}  // namespace weld
