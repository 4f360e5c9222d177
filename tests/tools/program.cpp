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
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

std::vector<nlohmann::json> recordsOf(const std::string& text) {
  std::vector<nlohmann::json> records;
  for (const std::string& line : linesOf(text)) {
    records.push_back(nlohmann::json::parse(line));
  }
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

TRun ZelweldTest::zelweld(const std::string& arguments) const {
  const fs::path out = folder / ".stdout";
  const fs::path err = folder / ".stderr";
  // The streams are opened first, so that the arguments may send standard output elsewhere.
  const std::string command = "cd '" + folder.string() + "' && exec >'" + out.string() + "' 2>'" + err.string() +
                              "' && '" ZELWELD_PROGRAM "' " + arguments;
  const int status = std::system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(out), readFile(err)};
}

TRun ZelweldTest::zelweldOk(const std::string& arguments) const {
  TRun run = zelweld(arguments);
  EXPECT_EQ(run.exitCode, 0) << arguments << "\n" << run.err;
  return run;
}

void ZelweldTest::simulate(const std::string& name, const std::string& options) const {
  zelweldOk("simulate --size 640x480 --out " + name + " " + options);
}
