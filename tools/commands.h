// The subcommands. Each one adds itself, its options and what it does to the program.
#pragma once

namespace CLI {
class App;
}

namespace tool {

void addTrackCommand(CLI::App& program);
void addSimulateCommand(CLI::App& program);
void addReportCommand(CLI::App& program);
void addParamsCommand(CLI::App& program);
void addExposureCommand(CLI::App& program);
void addFeaturesCommand(CLI::App& program);
void addCompareCommand(CLI::App& program);
void addSweepCommand(CLI::App& program);
void addAdviseCommand(CLI::App& program);
void addIdentifyCommand(CLI::App& program);
void addSeamCommand(CLI::App& program);

// Name, description and version of the program, and all of them.
void addCommands(CLI::App& program);

}  // namespace tool
