#include "tools/input_list.h"

#include "tools/cli_error.h"
#include "tools/image_file.h"
#include "tools/input_file.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <regex>

namespace tool {
namespace {

namespace fs = std::filesystem;

bool isDigit(char c) {
  return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

// The number that starts at `pos`, without leading zeros; moves `pos` behind it.
std::string takeNumber(const std::string& text, std::size_t& pos) {
  const std::size_t start = std::min(text.find_first_not_of('0', pos), text.size());
  std::size_t end = start;
  while (end < text.size() && isDigit(text[end])) {
    ++end;
  }
  pos = end;
  return text.substr(start, end - start);
}

std::vector<fs::path> listFolder(const fs::path& folder) {
  std::error_code failure;
  std::vector<fs::path> files;
  for (auto entry = fs::directory_iterator(folder, failure); !failure && entry != fs::directory_iterator();
       entry.increment(failure)) {
    std::error_code ignored;  // a link that leads nowhere is no folder either
    if (!entry->is_directory(ignored)) {
      files.push_back(entry->path());
    }
  }
  if (failure) {
    throw inputError(folder.string() + ": the folder cannot be read");
  }
  return files;
}

std::vector<TInputFile> expandFolder(const fs::path& folder) {
  std::vector<fs::path> images = listFolder(folder);
  images.erase(
      std::remove_if(images.begin(), images.end(), [](const fs::path& path) { return !hasImageName(path); }),
      images.end());
  if (images.empty()) {
    throw inputError(folder.string() + ": the folder holds no image files (" + imageEndings() + ")");
  }
  std::sort(images.begin(), images.end(),
            [](const fs::path& a, const fs::path& b) { return naturalLess(a.filename(), b.filename()); });
  std::vector<TInputFile> files;
  files.reserve(images.size());
  for (const fs::path& path : images) {
    files.push_back({path, false, files.empty()});
  }
  return files;
}

// A file name with one number in it, such as frame_%03d.png.
struct TNumberPattern {
  std::string prefix;
  std::size_t width = 1;  // digits at least
  std::string suffix;
};

std::optional<TNumberPattern> parsePattern(const std::string& name) {
  static const std::regex form("([^%]*)%0?([1-9]?)d([^%]*)");
  std::smatch parts;
  if (!std::regex_match(name, parts, form)) {
    return std::nullopt;
  }
  const std::size_t width = parts[2].length() == 0 ? 1 : std::stoul(parts[2]);
  return TNumberPattern{parts[1], width, parts[3]};
}

// The number with which the pattern gives this name, as digits without leading zeros.
std::optional<std::string> numberIn(const std::string& name, const TNumberPattern& pattern) {
  const std::size_t ends = pattern.prefix.size() + pattern.suffix.size();
  if (name.size() < ends + pattern.width || name.compare(0, pattern.prefix.size(), pattern.prefix) != 0 ||
      name.compare(name.size() - pattern.suffix.size(), std::string::npos, pattern.suffix) != 0) {
    return std::nullopt;
  }
  const std::string digits = name.substr(pattern.prefix.size(), name.size() - ends);
  const bool isPadded = digits.size() == pattern.width || digits[0] != '0';
  if (!isPadded || !std::all_of(digits.begin(), digits.end(), isDigit)) {
    return std::nullopt;
  }
  std::size_t pos = 0;
  return takeNumber(digits, pos);
}

std::vector<TInputFile> expandPattern(const fs::path& path) {
  const auto pattern = parsePattern(path.filename());
  if (!pattern) {
    throw inputError(path.string() + ": no such file, and no pattern with one number such as frame_%03d.png");
  }
  const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
  std::vector<TInputFile> files;
  for (const fs::path& file : listFolder(folder)) {
    if (numberIn(file.filename(), *pattern)) {
      files.push_back({path.parent_path() / file.filename(), false, false});
    }
  }
  if (files.empty()) {
    throw inputError(path.string() + ": no file fits this pattern");
  }
  std::sort(files.begin(), files.end(), [](const TInputFile& a, const TInputFile& b) {
    return naturalLess(a.path.filename(), b.path.filename());
  });
  files.front().startsSequence = true;
  return files;
}

std::vector<TInputFile> expandInput(const std::string& input) {
  const fs::path path(input);
  std::error_code failure;
  if (fs::is_directory(path, failure)) {
    return expandFolder(path);
  }
  const bool isThere = fs::exists(path, failure);
  if (!isThere && !failure && input.find('%') != std::string::npos) {
    return expandPattern(path);
  }
  requirePlainFile(path);
  const bool isVideo = hasVideoName(path);
  return {{path, isVideo, isVideo}};
}

}  // namespace

bool naturalLess(const std::string& a, const std::string& b) {
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < a.size() && j < b.size()) {
    if (isDigit(a[i]) && isDigit(b[j])) {
      const std::string left = takeNumber(a, i);
      const std::string right = takeNumber(b, j);
      if (left != right) {
        return left.size() != right.size() ? left.size() < right.size() : left < right;
      }
    } else if (a[i] != b[j]) {
      return a[i] < b[j];
    } else {
      ++i;
      ++j;
    }
  }
  const bool isSameSoFar = i == a.size() && j == b.size();
  return isSameSoFar ? a < b : i == a.size();
}

std::vector<TInputFile> listInputs(const std::vector<std::string>& inputs) {
  std::vector<TInputFile> files;
  bool followsSequence = false;
  for (const std::string& input : inputs) {
    std::vector<TInputFile> part = expandInput(input);
    const bool isSingleImage = !part.front().startsSequence;
    part.front().startsSequence = !(isSingleImage && followsSequence);
    followsSequence = isSingleImage;
    files.insert(files.end(), part.begin(), part.end());
  }
  return files;
}

}  // namespace tool
