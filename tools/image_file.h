// Image files, in and out.
#pragma once

#include "tools/image_size.h"

#include <opencv2/core.hpp>

#include <filesystem>
#include <string>

namespace tool {

// Whether the file name ends like an image file ("a.PNG"), or like a video file.
bool hasImageName(const std::filesystem::path& path);
bool hasVideoName(const std::filesystem::path& path);

// The endings of image files, for messages.
std::string imageEndings();

constexpr double kMaxMegapixels = 200.0;  // unless the user sets another limit

// Reads an image as stored: 8-bit grey or BGR, orientation marks ignored. Throws an input error when the file
// is missing, no plain file, empty, truncated, no image, or has more pixels or bytes than the limit allows.
cv::Mat readImage(const std::filesystem::path& path, double maxMegapixels = kMaxMegapixels);

// The same of bytes that were read elsewhere, under a name for messages.
cv::Mat decodeImage(const std::string& bytes, const std::filesystem::path& name,
                    double maxMegapixels = kMaxMegapixels);

// Throws an input error for more pixels than the limit allows.
void checkPixels(const std::filesystem::path& path, TImageSize size, double maxMegapixels);

// Writes a PNG file, whole or not at all, as writeWholeFile does.
void writeImage(const std::filesystem::path& path, const cv::Mat& image);

// Keeps what image and video decoders print away from standard error while any lives, on whatever thread.
class TDecoderSilence {
public:
  TDecoderSilence();
  ~TDecoderSilence();
  TDecoderSilence(const TDecoderSilence&) = delete;
  TDecoderSilence& operator=(const TDecoderSilence&) = delete;
};

}  // namespace tool
