// Lines on standard output.
#pragma once

#include "tools/cli_error.h"

#include <iostream>
#include <string>

namespace tool {

// Writes and flushes one line. Throws when standard output takes no more.
inline void printLine(const std::string& line) {
  std::cout << line << std::endl;
  if (!std::cout) {
    throw TCliError(TExit::failure, "standard output takes no more text (closed pipe or full disk)");
  }
}

}  // namespace tool
