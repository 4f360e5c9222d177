// Files that the program writes. Every failure throws one line that names the file.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace tool {

// Writes a file whole or not at all: beside its place under the name PATH.part, which then becomes PATH. Whatever
// stood there before stays when the disk refuses the new one.
void writeWholeFile(const std::filesystem::path& path, std::string_view bytes);

// Text written line by line, each one handed to the system when the call returns. A line that the disk refuses is
// taken back, so that the file ends with a whole one.
class TTextFile {
public:
  // Makes the file or empties it.
  explicit TTextFile(const std::filesystem::path& filePath);
  void writeLine(const std::string& line);

private:
  std::filesystem::path path;
  std::ofstream file;
};

// Creates a folder with its parents. Throws when that is not possible.
void makeFolder(const std::filesystem::path& path);

}  // namespace tool
