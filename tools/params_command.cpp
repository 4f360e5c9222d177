// zelweld params: what a joint reads.
#include "tools/cli_error.h"
#include "tools/commands.h"
#include "tools/names.h"
#include "tools/param_json.h"
#include "tools/parameter.h"

#include <iomanip>
#include <iostream>
#include <memory>

namespace tool {
namespace {

struct TOptions {
  TParamSource source;
  std::string format = "table";
};

constexpr int kNameWidth = 40;  // characters

void printTable(const TWeldParams& params) {
  std::cout << std::left << std::setw(kNameWidth) << "name (field)" << std::setw(9) << "default" << std::setw(9)
            << "unit" << std::setw(30) << "range"
            << "meaning\n";
  for (const TWeldParameter& parameter : parametersOf(params.weldType)) {
    std::cout << std::setw(kNameWidth) << labelOf(parameter) << std::setw(9) << valueOf(params, parameter).dump()
              << std::setw(9) << (*parameter.unit == '\0' ? "-" : parameter.unit) << std::setw(30)
              << describeLimits(parameter) << parameter.meaning << '\n'
              << (isFlag(parameter) ? "    false:    " : "    too low:  ") << parameter.tooLow << '\n'
              << (isFlag(parameter) ? "    true:     " : "    too high: ") << parameter.tooHigh << '\n';
  }
}

void run(const TOptions& options) {
  const TWeldParams params = loadParams(options.source);
  if (options.format == "table") {
    printTable(params);
  } else if (options.format == "json") {
    std::cout << paramsToJson(params).dump(2) << '\n';
  } else {
    throw usageError("--format: unknown format '" + options.format + "': use table, json");
  }
  std::cout.flush();
  if (!std::cout) {
    throw TCliError(TExit::failure, "standard output takes no more text (closed pipe or full disk)");
  }
}

}  // namespace

void addParamsCommand(CLI::App& program) {
  CLI::App* const command = program.add_subcommand("params", "Print the parameters that a joint reads");
  const auto options = std::make_shared<TOptions>();
  command->add_option("--type", options->source.type, "Joint, by name or number: " + detectorTypeNames())
      ->required();
  command->add_option("--position", options->source.position, "Welding position: " + positionNames());
  command->add_option("--preset", options->source.preset, "Angles of a corner: " + presetNames());
  command->add_option("--format", options->format, "table, or json: a file for track --params")
      ->capture_default_str();
  command->footer(
      "Examples:\n"
      "  zelweld params --type buttGap\n"
      "  zelweld params --type corner --preset roof --format json > corner.json");
  command->callback([options] { run(*options); });
}

}  // namespace tool
