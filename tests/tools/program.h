// Runs the built program in a folder of its own and keeps what it printed.
#pragma once

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

struct TRun {
  int exitCode = -1;
  std::string out;
  std::string err;
};

inline std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// One JSON object per line of the text.
inline std::vector<nlohmann::json> recordsOf(const std::string& text) {
  std::vector<nlohmann::json> records;
  for (const std::string& line : linesOf(text)) records.push_back(nlohmann::json::parse(line));
  return records;
}

// One field of every record.
template <typename T>
std::vector<T> fieldOf(const std::vector<nlohmann::json>& records, const char* name) {
  std::vector<T> values;
  for (const nlohmann::json& record : records) values.push_back(record[name].get<T>());
  return values;
}

// A file's bytes, and a file made of bytes.
inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}
inline void writeFile(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

class ZelweldTest : public testing::Test {
protected:
  void SetUp() override {
    const auto* const info = testing::UnitTest::GetInstance()->current_test_info();
    const std::string name = std::string("zelweld_") + info->test_suite_name() + "_" + info->name();
    folder = std::filesystem::temp_directory_path() / (name + "_" + std::to_string(getpid()));
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
  }
  void TearDown() override { std::filesystem::remove_all(folder); }

  // Runs a script of the shell in the test's folder; "$Z" is zelweld.
  TRun shell(const std::string& script) const {
    // The streams are opened first, so that the script may send standard output elsewhere.
    const std::string command =
        "Z='" ZELWELD_PROGRAM "'; cd '" + folder.string() + "' && exec >.stdout 2>.stderr && " + script;
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(folder / ".stdout"),
            readFile(folder / ".stderr")};
  }

  // Runs `zelweld <arguments>`; the arguments are shell text.
  TRun zelweld(const std::string& arguments) const { return shell("\"$Z\" " + arguments); }

  // The same, expected to succeed.
  TRun zelweldOk(const std::string& arguments) const {
    TRun run = zelweld(arguments);
    EXPECT_EQ(run.exitCode, 0) << arguments << "\n" << run.err;
    return run;
  }

  // The records of `zelweld track <arguments>`.
  std::vector<nlohmann::json> track(const std::string& arguments) const {
    return recordsOf(zelweldOk("track --format jsonl " + arguments).out);
  }

  // Each run ends with that code and one line on standard error that holds the text.
  struct TRefusal {
    std::string arguments;
    std::string text;
  };
  void expectRefused(int exitCode, const std::vector<TRefusal>& rows) const {
    for (const auto& [arguments, text] : rows) {
      const TRun run = zelweld(arguments);
      EXPECT_EQ(run.exitCode, exitCode) << arguments;
      EXPECT_EQ(linesOf(run.err).size(), 1U) << arguments << "\n" << run.err;
      EXPECT_NE(run.err.find(text), std::string::npos) << arguments << "\n" << run.err;
    }
  }

  // Draws a small sequence into folder/`name`.
  void simulate(const std::string& name, const std::string& options) const {
    zelweldOk("simulate --size 640x480 --out " + name + " " + options);
  }

  std::filesystem::path folder;
};
