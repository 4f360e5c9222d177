// Files that the program reads whole.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace tool {

// Throws an input error unless the path leads to a plain file. Pipes, sockets and devices, which may never answer,
// are refused without being opened.
void requirePlainFile(const std::filesystem::path& path);

// What a plain file holds; nothing when that is more than so many bytes. Throws an input error when it cannot be
// read.
std::optional<std::string> readPlainFile(const std::filesystem::path& path, std::uintmax_t maxBytes);

}  // namespace tool
