// How a command ends when it cannot go on: one line of text and an exit code.
#pragma once

#include "tools/text.h"

#include <stdexcept>
#include <string>

namespace tool {

enum class TExit : int {
  ok = 0,
  failure = 1,        // output that cannot be written, or a fault outside this program
  usage = 2,          // options, names and values
  input = 3,          // input that cannot be read
  hungUp = 129,       // by SIGHUP
  interrupted = 130,  // by SIGINT: 128 + its number, as shells have it
  terminated = 143    // by SIGTERM
};

class TCliError : public std::runtime_error {
public:
  // What a file or an option brings into the text cannot break its line.
  TCliError(TExit code, const std::string& text) : std::runtime_error(onOneLine(text)), exitCode(code) {}
  const TExit exitCode;
};

inline TCliError usageError(const std::string& text) {
  return {TExit::usage, text};
}
inline TCliError inputError(const std::string& text) {
  return {TExit::input, text};
}

}  // namespace tool
