#include "program.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

namespace fs = std::filesystem;

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::vector<nlohmann::json> recordsOf(const std::string& text) {
  std::vector<nlohmann::json> records;
  for (const std::string& line : linesOf(text)) records.push_back(nlohmann::json::parse(line));
  return records;
}

std::string readFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void writeFile(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

void ZelweldTest::SetUp() {
  const auto* const info = testing::UnitTest::GetInstance()->current_test_info();
  folder = fs::temp_directory_path() / (std::string("zelweld_") + info->test_suite_name() + "_" + info->name() +
                                        "_" + std::to_string(getpid()));
  fs::remove_all(folder);
  fs::create_directories(folder);
}

void ZelweldTest::TearDown() {
  fs::remove_all(folder);
}

TRun ZelweldTest::shell(const std::string& script) const {
  // The streams are opened first, so that the script may send standard output elsewhere.
  const std::string command =
      "Z='" ZELWELD_PROGRAM "'; cd '" + folder.string() + "' && exec >.stdout 2>.stderr && " + script;
  const int status = std::system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(folder / ".stdout"),
          readFile(folder / ".stderr")};
}

TRun ZelweldTest::zelweldOk(const std::string& arguments) const {
  TRun run = zelweld(arguments);
  EXPECT_EQ(run.exitCode, 0) << arguments << "\n" << run.err;
  return run;
}

void ZelweldTest::expectRefused(int exitCode, const std::vector<TRefusal>& rows) const {
  for (const auto& [arguments, text] : rows) {
    const TRun run = zelweld(arguments);
    EXPECT_EQ(run.exitCode, exitCode) << arguments;
    EXPECT_EQ(linesOf(run.err).size(), 1U) << arguments << "\n" << run.err;
    EXPECT_NE(run.err.find(text), std::string::npos) << arguments << "\n" << run.err;
  }
}

void ZelweldTest::simulate(const std::string& name, const std::string& options) const {
  zelweldOk("simulate --size 640x480 --out " + name + " " + options);
}
