// The page of a parameter sweep: charts and table, in one file that opens without a network.
#pragma once

#include "tools/sweep.h"

#include <string>

namespace tool {

std::string sweepPage(const TSweepResult& result);

}  // namespace tool
