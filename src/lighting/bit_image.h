// Images of one bit per pixel: yes-or-no questions about 64 pixels at a time.
#pragma once

#include <opencv2/core.hpp>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace weld {

inline constexpr int kBitsPerWord = 64;

inline constexpr std::uint64_t kAllBits = ~std::uint64_t{0};

// Words that hold one bit for each of `count` pixels.
inline std::size_t wordsFor(int count) {
  return static_cast<std::size_t>((count + kBitsPerWord - 1) / kBitsPerWord);
}

// Bit i tells whether low <= pixels[i] <= high; the bits behind the last pixel are 0. Fills wordsFor(count) words
// and tells whether any bit is set.
bool packRange(const std::uint8_t* pixels, int count, std::uint8_t low, std::uint8_t high, std::uint64_t* words);

// Rows of whole words; the bits behind the last column have no meaning.
struct TBitImage {
  int rows = 0;
  int cols = 0;
  std::size_t wordsPerRow = 0;
  std::vector<std::uint64_t> words;

  std::uint64_t* row(int y) { return words.data() + static_cast<std::size_t>(y) * wordsPerRow; }
  const std::uint64_t* row(int y) const { return words.data() + static_cast<std::size_t>(y) * wordsPerRow; }
};

// Set where the 8-bit image reaches the grey level.
TBitImage packPixelsFrom(const cv::Mat& grey, std::uint8_t level);

void invertBits(TBitImage& image);

// Erosion by a size x size square, size >= 1, whose anchor is element size / 2 in both directions. What lies
// outside the image counts as set. Logarithmic in the size: a run of 2n bits is two runs of n bits.
void erodeSquare(TBitImage& image, int size);

// Writes 255 for set bits and 0 for the others into an 8-bit image of the same size.
void unpackBits(const TBitImage& image, cv::Mat& grey);

}  // namespace weld
