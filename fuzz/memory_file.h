// A file that exists in memory only, for readers that take a path.
#pragma once

#include "fuzz/verdict.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <string>

namespace fuzz {

class TMemoryFile {
public:
  TMemoryFile() : descriptor(memfd_create("fuzz", 0)) { require(descriptor >= 0, "a file in memory"); }
  ~TMemoryFile() { close(descriptor); }
  TMemoryFile(const TMemoryFile&) = delete;
  TMemoryFile& operator=(const TMemoryFile&) = delete;

  // Replaces what the file holds.
  void write(const void* bytes, std::size_t count) {
    const bool isWritten =
        ftruncate(descriptor, 0) == 0 && pwrite(descriptor, bytes, count, 0) == static_cast<ssize_t>(count);
    require(isWritten, "a file in memory");
  }

  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor); }

private:
  int descriptor;
};

}  // namespace fuzz
