#include "tools/param_json.h"

#include "tools/cli_error.h"
#include "tools/input_file.h"
#include "tools/names.h"
#include "tools/parameter.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <utility>

namespace tool {
namespace {

using nlohmann::ordered_json;

const std::string kTypeKey = "weldType";
const std::string kPositionKey = "weldPosType";

constexpr std::uintmax_t kMaxFileBytes = 1 << 21;  // the library refuses half of it

TWeldJob readJob(const std::string& path, TWeldType instead) {
  const std::optional<std::string> text = readPlainFile(path, kMaxFileBytes);
  TJobReading reading = parseWeldJob(text.value_or(std::string(kMaxFileBytes, ' ')), instead);
  if (!reading.problem.empty()) {
    throw usageError(path + ": " + reading.problem);
  }
  return std::move(reading.job);
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

void applyPosition(TWeldParams& params, const std::string& position) {
  params.weldPosType = namingOrigin("--position", [&] { return parsePosition(params.weldType, position); });
}

void applyValue(TWeldParams& params, const std::string& assignment) {
  const std::size_t cut = assignment.find('=');
  const std::string problem =
      cut == std::string::npos ? "'" + assignment + "' is no assignment; write name=value, for example minGapPx=12"
                               : setWeldParameter(params, assignment.substr(0, cut), assignment.substr(cut + 1));
  if (!problem.empty()) {
    throw usageError("--set: " + problem);
  }
}

// The job that file and joint give, before single values.
TWeldJob startingJob(const TParamSource& source) {
  const bool hasType = !source.type.empty();
  const TWeldType type =
      hasType ? namingOrigin("--type", [&] { return parseDetectorType(source.type); }) : TWeldType::none;
  if (!source.file.empty()) {
    return readJob(source.file, type);
  }
  if (!hasType) {
    throw usageError("the joint is not given: use --type with one of " + detectorTypeNames() +
                     ", or --job with a file that names it");
  }
  TWeldJob job;
  initWeldParameters(type, job.params, TWeldPosType::centre);
  return job;
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

TWeldJob loadJob(const TParamSource& source) {
  TWeldJob job = startingJob(source);
  if (job.ownJoint && !(source.position.empty() && source.preset.empty() && source.values.empty())) {
    throw usageError("--position and --set change no joint of one's own; change its template in " + source.file);
  }
  if (!source.position.empty()) {
    applyPosition(job.params, source.position);
  }
  if (!source.preset.empty()) {
    applyPreset(job.params, source.preset);
  }
  for (const std::string& value : source.values) {
    applyValue(job.params, value);
  }
  return job;
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
