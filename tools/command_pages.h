// What the options of the program give besides its help: a manual page and completion in bash.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace tool {

// The words that an option takes: those that its description lists behind a colon, as in "Rankings as: table,
// csv". None where it takes anything.
std::vector<std::string> choicesOf(const CLI::Option& option);

// The page for `man`, in troff.
std::string manualPage(const CLI::App& program);

// A script for bash to source.
std::string bashCompletion(const CLI::App& program);

}  // namespace tool
