#include "tools/input_file.h"

#include "tools/cli_error.h"

#include <fstream>

namespace tool {
namespace {

namespace fs = std::filesystem;

const char* kindOf(fs::file_type type) {
  switch (type) {
    case fs::file_type::fifo:
      return "a pipe";
    case fs::file_type::socket:
      return "a socket";
    case fs::file_type::block:
    case fs::file_type::character:
      return "a device";
    case fs::file_type::directory:
      return "a folder";
    default:
      return "of an unknown kind";
  }
}

}  // namespace

void requirePlainFile(const fs::path& path) {
  std::error_code failure;
  const fs::file_status status = fs::status(path, failure);
  if (status.type() == fs::file_type::not_found) {
    throw inputError(path.string() + ": no such file");
  }
  if (status.type() == fs::file_type::none) {
    throw inputError(path.string() + ": cannot be read: " + failure.message());
  }
  if (!fs::is_regular_file(status)) {
    throw inputError(path.string() + ": cannot be read: it is " + kindOf(status.type()) + ", no plain file");
  }
}

std::optional<std::string> readPlainFile(const fs::path& path, std::uintmax_t maxBytes) {
  requirePlainFile(path);
  std::error_code failure;
  const std::uintmax_t size = fs::file_size(path, failure);
  std::ifstream file(path, std::ios::binary);
  if (failure || !file) {
    throw inputError(path.string() + ": cannot be opened for reading");
  }
  if (size > maxBytes) {
    return std::nullopt;
  }
  std::string bytes(static_cast<std::size_t>(size), '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  return bytes;
}

}  // namespace tool
