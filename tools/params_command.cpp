// zelweld params: what a joint reads.
#include "tools/cli_error.h"
#include "tools/commands.h"
#include "tools/names.h"
#include "tools/param_json.h"
#include "tools/parameter.h"
#include "tools/shared_options.h"
#include "tools/tracker_options.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <iomanip>
#include <iostream>
#include <memory>

namespace tool {
namespace {

struct TOptions {
  TParamSource source;
  TTrackerChoice tracker;
  TFrameOptions frames;
  std::string format = "table";
};

constexpr int kNameWidth = 40;  // characters

void printTable(const TWeldParams& params) {
  std::cout << std::left << std::setw(kNameWidth) << "name (field)" << std::setw(9) << "default" << std::setw(9)
            << "unit" << std::setw(30) << "range"
            << "meaning\n";
  for (const TWeldParameter& parameter : parametersOf(params.weldType)) {
    std::cout << std::setw(kNameWidth) << weldParameterLabel(parameter) << std::setw(9)
              << valueOf(params, parameter).dump() << std::setw(9)
              << (*parameter.unit == '\0' ? "-" : parameter.unit) << std::setw(30) << weldParameterRange(parameter)
              << parameter.meaning << '\n'
              << (isFlag(parameter) ? "    false:    " : "    too low:  ") << parameter.tooLow << '\n'
              << (isFlag(parameter) ? "    true:     " : "    too high: ") << parameter.tooHigh << '\n';
  }
}

TWeldJob jobOf(const TOptions& options) {
  TWeldJob job = loadJob(options.source);
  job.tracker = trackerOptionsOf(options.tracker, job.tracker);
  job.preparation = preparationOf(options.frames, job.preparation);
  return job;
}

void run(const TOptions& options) {
  const TWeldJob job = jobOf(options);
  if (options.format == "table") {
    printTable(job.params);
  } else if (options.format == "json") {
    std::cout << paramsToJson(job.params).dump(2) << '\n';
  } else if (options.format == "job") {
    std::cout << writeWeldJob(job);
  } else {
    throw usageError("--format: unknown format '" + options.format + "': use table, json, job");
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
  addParamOptions(*command, options->source);
  addTrackerOptions(*command, options->tracker);
  addPreparationOptions(*command, options->frames);
  command
      ->add_option("--format", options->format, "A table, the parameters alone, or a whole job: table, json, job")
      ->capture_default_str();
  command->footer(
      "Examples:\n"
      "  zelweld params --type buttGap\n"
      "  zelweld params --type corner --preset roof --format json > corner.json\n"
      "  zelweld params --type gap --set minGapPx=12 --rotate 90 --hold 5 --format job > gap.json");
  command->callback([options] { run(*options); });
}

}  // namespace tool
