#include "tools/output_file.h"

#include "tools/cli_error.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

TCliError refused(const fs::path& path) {
  return {TExit::failure, path.string() + ": cannot be written; check the folder and the free space"};
}

bool write(const fs::path& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  return file.good();
}

}  // namespace

void writeWholeFile(const fs::path& path, std::string_view bytes) {
  std::error_code failure;
  const fs::file_status status = fs::symlink_status(path, failure);
  // Deliberate: a device, a pipe or a link is written through; a rename would put a plain file in its place.
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    if (!write(path, bytes)) {
      throw refused(path);
    }
    return;
  }
  const fs::path part = path.string() + ".part";
  if (write(part, bytes)) {
    fs::rename(part, path, failure);
    if (!failure) {
      return;
    }
  }
  fs::remove(part, failure);
  throw refused(path);
}

TTextFile::TTextFile(const fs::path& filePath) : path(filePath), file(filePath, std::ios::trunc) {
  if (!file) {
    throw refused(path);
  }
}

void TTextFile::writeLine(const std::string& line) {
  const std::streamoff wholeLines = file.tellp();
  file << line << '\n' << std::flush;
  if (!file) {
    file.close();
    std::error_code ignored;  // a pipe or a device has no length
    fs::resize_file(path, static_cast<std::uintmax_t>(wholeLines), ignored);
    throw refused(path);
  }
}

void makeFolder(const fs::path& path) {
  std::error_code failure;
  fs::create_directories(path, failure);
  if (!fs::is_directory(path, failure)) {
    throw TCliError(TExit::failure, path.string() + ": no folder can be made here; choose another --out");
  }
}

}  // namespace tool
