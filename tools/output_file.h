// Files that the program writes. Every failure throws one line that names the file.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

// Writes a file whole or not at all: beside its place under the name PATH.part, which then becomes PATH. Whatever
// stood there before stays when the disk refuses the new one, and so does a PATH.part that is there already.
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

// Creates a folder where there is none. Throws when that is not possible: parents are not made.
void makeFolder(const std::filesystem::path& path);

// The same; throws a usage error when the folder holds anything.
void makeEmptyFolder(const std::filesystem::path& path);

// Finds out before a run rather than after it that its page has no place: a folder stands there, one of the files
// that the run reads, nothing around it, or a PATH.part beside it.
void checkPagePlace(const std::filesystem::path& page, const std::vector<std::filesystem::path>& inputs);

}  // namespace tool
