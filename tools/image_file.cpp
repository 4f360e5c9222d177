#include "tools/image_file.h"

#include "tools/cli_error.h"
#include "tools/output_file.h"
#include "tools/text.h"

#include <fcntl.h>
#include <unistd.h>
#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <vector>

namespace tool {
namespace {

namespace fs = std::filesystem;

const std::vector<std::string> kImageEndings = {".png",  ".jpg", ".jpeg", ".bmp", ".tif",
                                                ".tiff", ".pgm", ".ppm",  ".pnm", ".webp"};
const std::vector<std::string> kVideoEndings = {".avi",  ".mp4", ".mkv", ".mov", ".m4v",
                                                ".mpeg", ".mpg", ".wmv", ".webm"};

bool endsWithOneOf(const fs::path& path, const std::vector<std::string>& endings) {
  std::string ending = path.extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return std::find(endings.begin(), endings.end(), ending) != endings.end();
}

using TBytes = std::vector<unsigned char>;

TBytes readBytes(const fs::path& path) {
  std::error_code failure;
  if (!fs::exists(path, failure)) {
    throw inputError(path.string() + ": no such file");
  }
  std::ifstream file(path, std::ios::binary);
  if (!file || !fs::is_regular_file(path, failure)) {
    throw inputError(path.string() + ": cannot be opened for reading");
  }
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::ptrdiff_t lastMarker(const TBytes& bytes, unsigned char code) {
  const TBytes marker = {0xFF, code};
  const auto found = std::find_end(bytes.begin(), bytes.end(), marker.begin(), marker.end());
  return found == bytes.end() ? -1 : found - bytes.begin();
}

// A decoder fills the rest of a cut-off JPEG picture with grey and calls it read. In a whole file the
// end-of-image marker comes after the last start of scan.
bool isCutOffJpeg(const TBytes& bytes) {
  const bool isJpeg = bytes.size() > 2 && bytes[0] == 0xFF && bytes[1] == 0xD8;
  constexpr unsigned char kEndOfImage = 0xD9;
  constexpr unsigned char kStartOfScan = 0xDA;
  return isJpeg && lastMarker(bytes, kEndOfImage) < lastMarker(bytes, kStartOfScan);
}

cv::Mat decode(const TBytes& bytes) {
  const TDecoderSilence silence;
  try {
    return cv::imdecode(bytes, cv::IMREAD_ANYCOLOR | cv::IMREAD_IGNORE_ORIENTATION);
  } catch (const cv::Exception&) {
    return {};
  }
}

}  // namespace

bool hasImageName(const fs::path& path) {
  return endsWithOneOf(path, kImageEndings);
}
bool hasVideoName(const fs::path& path) {
  return endsWithOneOf(path, kVideoEndings);
}
std::string imageEndings() {
  return join(kImageEndings, " ");
}

cv::Mat readImage(const fs::path& path) {
  const TBytes bytes = readBytes(path);
  if (bytes.empty()) {
    throw inputError(path.string() + ": the file is empty; an image file is needed (" + imageEndings() + ")");
  }
  if (isCutOffJpeg(bytes)) {
    throw inputError(path.string() + ": the image is cut off before its end");
  }
  cv::Mat image = decode(bytes);
  if (image.empty()) {
    throw inputError(path.string() + ": no whole image; a complete image file is needed (" + imageEndings() + ")");
  }
  return image;
}

void writeImage(const fs::path& path, const cv::Mat& image) {
  TBytes bytes;
  cv::imencode(".png", image, bytes);
  writeWholeFile(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

TDecoderSilence::TDecoderSilence() : savedStderr(dup(STDERR_FILENO)) {
  static_cast<void>(std::fflush(stderr));
  const int nowhere = open("/dev/null", O_WRONLY);
  if (nowhere >= 0) {
    dup2(nowhere, STDERR_FILENO);
    close(nowhere);
  }
}

TDecoderSilence::~TDecoderSilence() {
  static_cast<void>(std::fflush(stderr));
  if (savedStderr >= 0) {
    dup2(savedStderr, STDERR_FILENO);
    close(savedStderr);
  }
}

}  // namespace tool
