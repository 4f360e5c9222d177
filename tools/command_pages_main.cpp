// Writes the manual page and the completion of zelweld: command_pages FOLDER
#include "tools/command_pages.h"
#include "tools/commands.h"
#include "tools/output_file.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>

int main(int argc, char** argv) {
  try {
    CLI::App program;
    tool::addCommands(program);
    const std::filesystem::path folder = argc > 1 ? argv[1] : ".";
    tool::writeWholeFile(folder / "zelweld.1", tool::manualPage(program));
    tool::writeWholeFile(folder / "zelweld.bash", tool::bashCompletion(program));
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "command_pages: " << error.what() << std::endl;
    return 1;
  }
}
