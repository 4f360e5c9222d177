// zelweld: finds seams in images, draws images with known seams, and explains the parameters.
#include "tools/cli_error.h"
#include "tools/commands.h"
#include "tools/stop_signal.h"
#include "tools/terminal_filter.h"
#include "tools/text.h"

#include <CLI/CLI.hpp>
#include <opencv2/core.hpp>
#include <opencv2/core/utils/logger.hpp>

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <vector>

namespace {

using tool::TExit;

int finish(TExit code, const std::string& line) {
  std::cerr << "zelweld: " << tool::onOneLine(line) << std::endl;
  return static_cast<int>(code);
}

std::string firstLine(const std::string& text) {
  return text.substr(0, text.find('\n'));
}

// The subcommand whose options were at fault, for the hint at its help.
std::string helpHint(const CLI::App& program) {
  const auto chosen = program.get_subcommands();
  return "; see zelweld " + (chosen.empty() ? "" : chosen.front()->get_name() + " ") + "--help";
}

// The parser reports a mistyped subcommand as a missing one, so it is looked up here.
void checkSubcommand(const CLI::App& program, int argc, char** argv) {
  const std::string word = argc > 1 ? argv[1] : "";
  std::vector<std::string> names;
  for (const CLI::App* const command : program.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(command->get_name());
  }
  if (argc > 1 && word[0] != '-' && std::find(names.begin(), names.end(), word) == names.end()) {
    throw tool::usageError("unknown subcommand '" + word + "': use " + tool::join(names, ", "));
  }
}

int run(CLI::App& program, int argc, char** argv) {
  try {
    checkSubcommand(program, argc, argv);
    program.parse(argc, argv);
    tool::throwIfStopRequested();
    return static_cast<int>(TExit::ok);
  } catch (const CLI::Success& help) {
    return program.exit(help);
  } catch (const CLI::ParseError& error) {
    return finish(TExit::usage, firstLine(error.what()) + helpHint(program));
  } catch (const tool::TCliError& error) {
    return finish(error.exitCode, error.what());
  } catch (const cv::Exception& error) {
    return finish(TExit::failure, "OpenCV refused: " + firstLine(error.err));
  } catch (const std::bad_alloc&) {
    return finish(TExit::failure, "out of memory");
  }
}

}  // namespace

int main(int argc, char** argv) {
  cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));  // a closed pipe is reported as a failed write,
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));  // and so is a file beyond the size limit
  tool::catchStopSignals();
  try {
    std::optional<tool::TTerminalFilter> filter;
    if (isatty(STDOUT_FILENO) == 1) {
      filter.emplace(std::cout);
    }
    CLI::App program;
    tool::addCommands(program);
    return run(program, argc, argv);
  } catch (const std::exception& error) {
    return finish(TExit::failure, error.what());
  }
}
