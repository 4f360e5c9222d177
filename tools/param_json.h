// Jobs from files and command-line options, and parameters back into files.
#pragma once

#include "zelWeldDetect.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace tool {

// Where a record comes from. Empty texts are not given. A later one wins over an earlier one:
// defaults, file, type, position and preset, single values.
struct TParamSource {
  std::string file;                 // a job, or parameters as paramsToJson gives them
  std::string type;                 // name or number
  std::string position;             // name or number
  std::vector<std::string> values;  // "name=value"
  std::string preset = {};          // of a corner: its angles
};

// The job that the source describes. Throws a usage error that names the file or option and what would
// be right, an input error when the file cannot be read.
TWeldJob loadJob(const TParamSource& source);

// weldType and weldPosType by name, then every parameter that the joint reads, by its name.
nlohmann::ordered_json paramsToJson(const TWeldParams& params);

}  // namespace tool
