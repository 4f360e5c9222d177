#include "tools/output_file.h"

#include "tools/cli_error.h"

#include <cstdio>

namespace tool {
namespace {

namespace fs = std::filesystem;

TCliError refused(const fs::path& path) {
  return {TExit::failure, path.string() + ": cannot be written; check the folder and the free space"};
}

// Modes as of fopen: "wb" replaces what is there, "wbx" makes a new file only.
fs::path partOf(const fs::path& path) {
  return path.string() + ".part";
}

void checkPart(const fs::path& path) {
  std::error_code failure;
  if (fs::exists(fs::symlink_status(partOf(path), failure))) {
    throw TCliError(TExit::failure, partOf(path).string() + ": is in the way; remove it or choose another --out");
  }
}

bool write(const fs::path& path, const char* mode, std::string_view bytes) {
  std::FILE* const file = std::fopen(path.c_str(), mode);
  if (file == nullptr) {
    return false;
  }
  const bool isWritten = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  return std::fclose(file) == 0 && isWritten;
}

}  // namespace

void writeWholeFile(const fs::path& path, std::string_view bytes) {
  std::error_code failure;
  const fs::file_status status = fs::symlink_status(path, failure);
  // Deliberate: a device, a pipe or a link is written through; a rename would put a plain file in its place.
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    if (!write(path, "wb", bytes)) {
      throw refused(path);
    }
    return;
  }
  checkPart(path);
  const fs::path part = partOf(path);
  if (write(part, "wbx", bytes)) {
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
  fs::create_directory(path, failure);
  if (!fs::is_directory(path, failure)) {
    throw TCliError(
        TExit::failure,
        path.string() + ": no folder can be made here; is the one around it there? Choose another --out");
  }
}

void makeEmptyFolder(const fs::path& path) {
  makeFolder(path);
  std::error_code failure;
  if (!fs::is_empty(path, failure) || failure) {
    throw usageError("--out: " + path.string() + " holds other files; name a new folder or an empty one");
  }
}

void checkPagePlace(const fs::path& page, const std::vector<fs::path>& inputs) {
  std::error_code failure;
  if (fs::is_directory(page, failure)) {
    throw usageError("--out: " + page.string() + " is a folder; name the page, as in " +
                     (page / "report.html").string());
  }
  for (const fs::path& input : inputs) {
    if (fs::equivalent(page, input, failure)) {
      throw usageError("--out: " + page.string() + " is read by this run; choose another name");
    }
  }
  const fs::path folder = page.has_parent_path() ? page.parent_path() : fs::path(".");
  if (!fs::is_directory(folder, failure)) {
    throw TCliError(TExit::failure, page.string() + ": cannot be written; there is no folder " + folder.string());
  }
  checkPart(page);
}

}  // namespace tool
