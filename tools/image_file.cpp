#include "tools/image_file.h"

#include "tools/cli_error.h"
#include "tools/input_file.h"
#include "tools/output_file.h"
#include "tools/text.h"

#include <fcntl.h>
#include <unistd.h>
#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <mutex>
#include <optional>
#include <utility>
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

TCliError noWholeImage(const fs::path& path) {
  return inputError(path.string() + ": no whole image; a complete image file is needed (" + imageEndings() + ")");
}

constexpr double kPixelsPerMegapixel = 1e6;
constexpr double kMaxBytesPerPixel = 4.0;  // of a picture that is not compressed
constexpr double kMaxHeaderBytes = 1e6;

TCliError tooLarge(const fs::path& path, const std::string& what, double maxMegapixels) {
  return inputError(path.string() + ": " + what + " are more than an image of " + plain(maxMegapixels) +
                    " megapixels has; --max-megapixels sets the limit");
}

std::string readBytes(const fs::path& path, double maxMegapixels) {
  const double maxBytes = maxMegapixels * kPixelsPerMegapixel * kMaxBytesPerPixel + kMaxHeaderBytes;
  std::optional<std::string> bytes = readPlainFile(path, static_cast<std::uintmax_t>(maxBytes));
  if (!bytes) {
    throw tooLarge(path, "its bytes", maxMegapixels);
  }
  return std::move(*bytes);
}

}  // namespace

void checkPixels(const fs::path& path, TImageSize size, double maxMegapixels) {
  if (static_cast<double>(size.width) * static_cast<double>(size.height) > maxMegapixels * kPixelsPerMegapixel) {
    throw tooLarge(path, std::to_string(size.width) + "x" + std::to_string(size.height) + " pixels",
                   maxMegapixels);
  }
}

namespace {

// Of a few bytes a decoder makes a picture of gigabytes; what a file declares costs nothing to read.
void checkSize(const fs::path& path, const std::string& bytes, double maxMegapixels) {
  const std::optional<TImageSize> size = declaredSize(bytes);
  if (!size) {
    throw noWholeImage(path);
  }
  checkPixels(path, *size, maxMegapixels);
}

// Standard error is one for all threads: the first silence puts it away, the last one brings it back.
std::mutex silenceMutex;
int silences = 0;
int savedStderr = -1;

// A decoder fills the rest of a cut-off JPEG picture with grey and calls it read. In a whole file the
// end-of-image marker comes after the last start of scan.
bool isCutOffJpeg(const std::string& bytes) {
  const bool isJpeg = bytes.rfind("\xFF\xD8", 0) == 0;
  const auto last = [&](const char* marker) { return bytes.rfind(marker) + 1; };  // 0: there is none
  const char* const endOfImage = "\xFF\xD9";
  const char* const startOfScan = "\xFF\xDA";
  return isJpeg && last(endOfImage) < last(startOfScan);
}

cv::Mat decode(const std::string& bytes) {
  const TDecoderSilence silence;
  try {
    return cv::imdecode(std::vector<unsigned char>(bytes.begin(), bytes.end()),
                        cv::IMREAD_ANYCOLOR | cv::IMREAD_IGNORE_ORIENTATION);
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

cv::Mat decodeImage(const std::string& bytes, const fs::path& path, double maxMegapixels) {
  if (bytes.empty()) {
    throw inputError(path.string() + ": the file is empty; an image file is needed (" + imageEndings() + ")");
  }
  if (isCutOffJpeg(bytes)) {
    throw inputError(path.string() + ": the image is cut off before its end");
  }
  checkSize(path, bytes, maxMegapixels);
  cv::Mat image = decode(bytes);
  if (image.empty()) {
    throw noWholeImage(path);
  }
  return image;
}

cv::Mat readImage(const fs::path& path, double maxMegapixels) {
  return decodeImage(readBytes(path, maxMegapixels), path, maxMegapixels);
}

void writeImage(const fs::path& path, const cv::Mat& image) {
  std::vector<unsigned char> bytes;
  cv::imencode(".png", image, bytes);
  writeWholeFile(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

TDecoderSilence::TDecoderSilence() {
  const std::lock_guard<std::mutex> lock(silenceMutex);
  if (silences++ > 0) {
    return;
  }
  savedStderr = dup(STDERR_FILENO);
  static_cast<void>(std::fflush(stderr));
  const int nowhere = open("/dev/null", O_WRONLY);
  if (nowhere >= 0) {
    dup2(nowhere, STDERR_FILENO);
    close(nowhere);
  }
}

TDecoderSilence::~TDecoderSilence() {
  const std::lock_guard<std::mutex> lock(silenceMutex);
  if (--silences > 0) {
    return;
  }
  static_cast<void>(std::fflush(stderr));
  if (savedStderr >= 0) {
    dup2(savedStderr, STDERR_FILENO);
    close(savedStderr);
  }
}

}  // namespace tool
