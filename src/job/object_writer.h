// Writes fields as the members of a JSON object: the counterpart of TObjectReader.
#pragma once

#include "job/object_reader.h"
#include "zelWeldTemplate.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace weld {

class TObjectWriter {
public:
  explicit TObjectWriter(nlohmann::ordered_json& object) : node(object) {}

  void flag(const char* key, bool field) { node[key] = field; }
  void text(const char* key, const std::string& field) { node[key] = field; }
  void number(const char* key, double field, TNumberRule /*rule*/) { node[key] = limitOf(field); }
  void place(const char* key, float field) { node[key] = limitOf(static_cast<double>(field)); }
  void count(const char* key, std::int32_t field, std::int32_t /*least*/) { node[key] = field; }
  void range(const char* key, const TJointRange& field) {
    const bool isAny = field.min == -TJointRange::kAny && field.max == TJointRange::kAny;
    if (!isAny) node[key] = {limitOf(field.min), limitOf(field.max)};
  }

  template <typename T>
  void choice(const char* key, T field, const std::vector<TNamed<T>>& names) {
    node[key] = nameIn(names, field);
  }

  template <typename TWrite>
  void object(const char* key, TWrite write) {
    node[key] = nlohmann::ordered_json::object();
    TObjectWriter writer(node[key]);
    write(writer);
  }

  template <typename T, typename TWrite>
  void list(const char* key, std::vector<T>& field, TWrite write) {
    node[key] = nlohmann::ordered_json::array();
    for (T& entry : field) {
      node[key].push_back(nlohmann::ordered_json::object());
      TObjectWriter writer(node[key].back());
      write(writer, entry);
    }
  }

private:
  static nlohmann::ordered_json limitOf(double value) {
    return std::isfinite(value) ? nlohmann::ordered_json(value) : nlohmann::ordered_json(nullptr);
  }

  nlohmann::ordered_json& node;
};

}  // namespace weld
