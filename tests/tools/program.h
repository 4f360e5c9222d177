// Runs the built program in a folder of its own and keeps what it printed.
#pragma once

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>

#include <filesystem>
#include <string>
#include <vector>

struct TRun {
  int exitCode = -1;
  std::string out;
  std::string err;
};

std::vector<std::string> linesOf(const std::string& text);

// One JSON object per line of the text.
std::vector<nlohmann::json> recordsOf(const std::string& text);

// One field of every record.
template <typename T>
std::vector<T> fieldOf(const std::vector<nlohmann::json>& records, const char* name) {
  std::vector<T> values;
  for (const nlohmann::json& record : records) values.push_back(record[name].get<T>());
  return values;
}

// A file's bytes, and a file made of bytes.
std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, const std::string& bytes);

class ZelweldTest : public testing::Test {
protected:
  void SetUp() override;
  void TearDown() override;

  // Runs a script of the shell in the test's folder; "$Z" is zelweld.
  TRun shell(const std::string& script) const;

  // Runs `zelweld <arguments>`; the arguments are shell text.
  TRun zelweld(const std::string& arguments) const { return shell("\"$Z\" " + arguments); }

  // The same, expected to succeed.
  TRun zelweldOk(const std::string& arguments) const;

  // The records of `zelweld track <arguments>`.
  std::vector<nlohmann::json> track(const std::string& arguments) const {
    return recordsOf(zelweldOk("track --format jsonl " + arguments).out);
  }

  // Each run ends with that code and one line on standard error that holds the text.
  struct TRefusal {
    std::string arguments;
    std::string text;
  };
  void expectRefused(int exitCode, const std::vector<TRefusal>& rows) const;

  // Draws a small sequence into folder/`name`.
  void simulate(const std::string& name, const std::string& options) const;

  std::filesystem::path folder;
};
