// Bytes of any kind as the parameter file of zelweld, and texts of any kind as the options beside it.
//
// The file comes first; after a zero byte follow, each ended by another one, --type, --position and as many --set
// as there are.
#include "fuzz/memory_file.h"
#include "fuzz/verdict.h"
#include "tools/cli_error.h"
#include "tools/param_json.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> splitAtZeros(const std::uint8_t* data, std::size_t size) {
  std::vector<std::string> parts(1);
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] == 0) {
      parts.emplace_back();
    } else {
      parts.back() += static_cast<char>(data[i]);
    }
  }
  return parts;
}

tool::TParamSource sourceFrom(const std::vector<std::string>& parts, const std::string& path) {
  tool::TParamSource source;
  source.file = path;
  if (parts.size() > 1) source.type = parts[1];
  if (parts.size() > 2) source.position = parts[2];
  if (parts.size() > 3) source.values.assign(parts.begin() + 3, parts.end());
  return source;
}

bool isOneLine(const std::string& text) {
  return !text.empty() && text.find('\n') == std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::TMemoryFile file;
  const std::vector<std::string> parts = splitAtZeros(data, size);
  file.write(parts[0].data(), parts[0].size());
  try {
    const auto record = tool::paramsToJson(tool::loadJob(sourceFrom(parts, file.path())).params);
    const std::string text = record.dump();
    file.write(text.data(), text.size());
    const auto again = tool::paramsToJson(tool::loadJob(sourceFrom({}, file.path())).params);
    fuzz::require(again == record, "a record that survives its own file");
  } catch (const tool::TCliError& error) {
    fuzz::require(error.exitCode == tool::TExit::usage || error.exitCode == tool::TExit::input, "a user's error");
    fuzz::require(isOneLine(error.what()), "an error of one line");
  }
  return 0;
}
