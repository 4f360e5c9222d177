// What the inputs on a command line stand for: a list of image and video files in order.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tool {

struct TInputFile {
  std::filesystem::path path;
  bool isVideo = false;
  bool startsSequence = false;  // nothing is carried over from the file before
};

// Orders names as people count: "img2" before "img10".
bool naturalLess(const std::string& a, const std::string& b);

// Expands image files, folders (their image files in natural order), patterns such as frame_%03d.png (every
// number that exists, ascending) and video files. Image files named one by one are one sequence; each folder,
// pattern and video begins a new one. Throws an input error for an input that does not exist, is no
// plain file, or holds no image.
std::vector<TInputFile> listInputs(const std::vector<std::string>& inputs);

}  // namespace tool
