#include "tools/commands.h"

#include <CLI/CLI.hpp>

namespace tool {

void addCommands(CLI::App& program) {
  program.name("zelweld");
  program.description("Finds weld seams in images of a laser stripe.");
  program.set_version_flag("--version", ZELWELD_VERSION);
  program.require_subcommand(1);
  addTrackCommand(program);
  addReportCommand(program);
  addSimulateCommand(program);
  addParamsCommand(program);
  addExposureCommand(program);
  addFeaturesCommand(program);
  addCompareCommand(program);
  addSweepCommand(program);
  addAdviseCommand(program);
  addIdentifyCommand(program);
  addSeamCommand(program);
}

}  // namespace tool
