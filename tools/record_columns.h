// What every frame of a run is recorded with, whatever the joint, as columns of one table. Beside them stand
// frame, file, state and time; the measures of the joint are those of tools/measures.h.
#pragma once

#include "tools/frame_record.h"

#include <functional>
#include <string>
#include <vector>

namespace tool {

struct TColumn {
  std::string name;                                // "x", "storedX", "trackVal"
  std::string unit;                                // "px"; empty where it depends on the joint
  int digits = 0;                                  // decimals that are written; 0: a count
  std::function<double(const TFrameRecord&)> get;  // not a number where the frame has none
};

const std::vector<TColumn>& recordColumns();

}  // namespace tool
