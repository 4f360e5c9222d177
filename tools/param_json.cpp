#include "tools/param_json.h"

#include "tools/cli_error.h"
#include "tools/names.h"
#include "tools/parameter.h"
#include "tools/text.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

namespace tool {
namespace {

using nlohmann::ordered_json;

const std::string kTypeKey = "weldType";
const std::string kPositionKey = "weldPosType";

constexpr std::size_t kMaxFileBytes = 1 << 20;  // a record of every parameter is smaller than a thousandth of it

// Stops behind the limit, so that a device that never ends is refused, too.
std::string readText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file || std::filesystem::is_directory(path)) {
    throw inputError(path + ": cannot be read; --params takes a JSON file");
  }
  std::string text(kMaxFileBytes + 1, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(file.gcount()));
  if (text.size() > kMaxFileBytes) {
    throw usageError(path + ": holds more than 1 MiB; `zelweld params --format json` shows a parameter file");
  }
  return text;
}

// A parser that drops all but the last value of a name would hide which of them was meant.
class TTwiceNamed {
public:
  explicit TTwiceNamed(const std::string& file) : path(file) {}

  bool operator()(int depth, ordered_json::parse_event_t event, const ordered_json& parsed) {
    const bool isName = depth == 1 && event == ordered_json::parse_event_t::key;
    if (isName && !names.insert(parsed.get<std::string>()).second) {
      throw usageError(path + ": names " + parsed.get<std::string>() + " twice");
    }
    return true;
  }

private:
  std::string path;
  std::set<std::string> names;
};

ordered_json parseFile(const std::string& path) {
  const std::string text = readText(path);
  try {
    ordered_json record = ordered_json::parse(text, TTwiceNamed(path));
    if (!record.is_object()) {
      throw usageError(path + ": holds no JSON object; `zelweld params --format json` shows one");
    }
    return record;
  } catch (const ordered_json::parse_error& error) {
    const auto stop = text.begin() + static_cast<std::ptrdiff_t>(std::min(error.byte, text.size()));
    const auto line = 1 + std::count(text.begin(), stop, '\n');
    throw usageError(path + ": no valid JSON at line " + std::to_string(line) +
                     "; `zelweld params --format json` shows a valid file");
  } catch (const ordered_json::out_of_range&) {
    throw usageError(path + ": holds a number that is too large for any parameter");
  }
}

// A name or number of the file as it would be typed.
std::string nameIn(const ordered_json& record, const std::string& key) {
  const auto found = record.find(key);
  if (found == record.end()) {
    return {};
  }
  return found->is_string() ? found->get<std::string>() : describeValue(*found);
}

void applyFile(TWeldParams& params, const ordered_json& record) {
  std::set<const TWeldParameter*> given;
  for (const auto& [key, value] : record.items()) {
    if (key == kTypeKey || key == kPositionKey) {
      continue;
    }
    const TWeldParameter& parameter = findParameter(params.weldType, key);
    if (!given.insert(&parameter).second) {
      throw usageError("sets " + labelOf(parameter) + " twice, by either name");
    }
    setValue(params, parameter, value);
  }
}

void applyValue(TWeldParams& params, const std::string& assignment) {
  const std::size_t cut = assignment.find('=');
  if (cut == std::string::npos) {
    throw usageError("'" + assignment + "' is no assignment; write name=value, for example minGapPx=12");
  }
  const TWeldParameter& parameter = findParameter(params.weldType, assignment.substr(0, cut));
  const std::string text = assignment.substr(cut + 1);
  double number = 0.0;
  if (parseNumber(text, number)) {
    setValue(params, parameter, number);
  } else if (text == "true" || text == "false") {
    setValue(params, parameter, text == "true");
  } else {
    setValue(params, parameter, text);
  }
}

// Runs a step and puts the name of its origin before the text of its error.
template <typename TStep>
auto namingOrigin(const std::string& origin, TStep step) -> decltype(step()) {
  try {
    return step();
  } catch (const TCliError& error) {
    throw TCliError(error.exitCode, origin + ": " + error.what());
  }
}

TWeldType chooseType(const TParamSource& source, const ordered_json& record) {
  const bool isOption = !source.type.empty();
  const std::string text = isOption ? source.type : nameIn(record, kTypeKey);
  if (text.empty()) {
    throw usageError("the joint is not given: use --type with one of " + detectorTypeNames() +
                     ", or --params with a file that holds " + kTypeKey);
  }
  return namingOrigin(isOption ? "--type" : source.file, [&] { return parseDetectorType(text); });
}

TWeldPosType choosePosition(TWeldType type, const TParamSource& source, const ordered_json& record) {
  const bool isOption = !source.position.empty();
  const std::string text = isOption ? source.position : nameIn(record, kPositionKey);
  if (text.empty()) {
    return TWeldPosType::centre;
  }
  return namingOrigin(isOption ? "--position" : source.file, [&] { return parsePosition(type, text); });
}

void applyPreset(TWeldParams& params, const std::string& name) {
  if (params.weldType != TWeldType::corner) {
    throw usageError("--preset: only a corner has presets, not " + nameOf(params.weldType));
  }
  const auto& presets = cornerPresets();
  const auto preset = std::find_if(presets.begin(), presets.end(), [&](const auto& p) { return name == p.name; });
  if (preset == presets.end()) {
    throw usageError("--preset: unknown preset '" + name + "': use " + presetNames());
  }
  params = preset->applyTo(params);
}

}  // namespace

TWeldParams loadParams(const TParamSource& source) {
  const ordered_json record = source.file.empty() ? ordered_json::object() : parseFile(source.file);
  const TWeldType type = chooseType(source, record);
  TWeldParams params;
  initWeldParameters(type, params, choosePosition(type, source, record));
  namingOrigin(source.file, [&] { applyFile(params, record); });
  if (!source.preset.empty()) {
    applyPreset(params, source.preset);
  }
  for (const std::string& value : source.values) {
    namingOrigin("--set", [&] { applyValue(params, value); });
  }
  return params;
}

ordered_json paramsToJson(const TWeldParams& params) {
  ordered_json record;
  record[kTypeKey] = nameOf(params.weldType);
  record[kPositionKey] = weldPosText(params.weldPosType);
  for (const TWeldParameter& parameter : parametersOf(params.weldType)) {
    record[parameter.name] = valueOf(params, parameter);
  }
  return record;
}

}  // namespace tool
