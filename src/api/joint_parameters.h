// The parameters that each joint reads: the rows of the public table.
#pragma once

#include "zelWeldSettings.h"

#include <vector>

namespace weld {

std::vector<TWeldParameter> gapParameters();
std::vector<TWeldParameter> lapParameters();
std::vector<TWeldParameter> cornerParameters();
std::vector<TWeldParameter> plateParameters();
std::vector<TWeldParameter> grooveParameters();
std::vector<TWeldParameter> presenceParameters();

}  // namespace weld
