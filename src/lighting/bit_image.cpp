#include "lighting/bit_image.h"

#include <opencv2/core/hal/intrin.hpp>

#include <algorithm>
#include <cstring>

namespace weld {
namespace {

// How far a window of `size` pixels reaches before and after its anchor, no farther than the image needs.
struct TReach {
  std::size_t before = 0;
  std::size_t after = 0;

  std::size_t window() const { return before + 1 + after; }
};

TReach reachOf(int size, int extent) {
  const int before = size / 2;
  return {static_cast<std::size_t>(std::min(before, extent - 1)),
          static_cast<std::size_t>(std::min(size - 1 - before, extent - 1))};
}

// Calls merge(shift) until each element stands for itself and the window - 1 elements that follow.
template <typename TMerge>
void growRuns(std::size_t window, TMerge merge) {
  for (std::size_t length = 1; length < window;) {
    const std::size_t shift = std::min(length, window - length);
    merge(shift);
    length += shift;
  }
}

void erodeColumns(TBitImage& image, int size) {
  const TReach reach = reachOf(size, image.rows);
  const std::size_t wordsBefore = reach.before * image.wordsPerRow;
  std::vector<std::uint64_t> runs(image.words.size() + (reach.window() - 1) * image.wordsPerRow, kAllBits);
  std::copy(image.words.begin(), image.words.end(), runs.begin() + static_cast<std::ptrdiff_t>(wordsBefore));
  growRuns(reach.window(), [&](std::size_t shift) {
    const std::size_t offset = shift * image.wordsPerRow;
    std::uint64_t* const run = runs.data();
    for (std::size_t i = 0; i + offset < runs.size(); ++i) run[i] &= run[i + offset];
  });
  std::copy_n(runs.begin(), image.words.size(), image.words.begin());
}

// The 64 bits that begin at bit `position`; reads the word behind them.
std::uint64_t bitsAt(const std::uint64_t* words, std::size_t position) {
  const std::uint64_t* const word = words + position / kBitsPerWord;
  const std::size_t shift = position % kBitsPerWord;
  return (word[0] >> shift) | ((word[1] << 1) << (kBitsPerWord - 1 - shift));
}

// Bits of the last word of a row that lie behind the last column.
std::uint64_t tailBits(int cols) {
  const int used = cols % kBitsPerWord;
  return used == 0 ? 0 : kAllBits << used;
}

// True for a row that is wholly set or wholly clear, which no erosion changes.
bool isUniform(const std::uint64_t* row, std::size_t count, std::uint64_t tail) {
  std::uint64_t anySet = row[count - 1] & ~tail;
  std::uint64_t allSet = row[count - 1] | tail;
  for (std::size_t i = 0; i + 1 < count; ++i) {
    anySet |= row[i];
    allSet &= row[i];
  }
  return anySet == 0 || allSet == kAllBits;
}

void erodeRows(TBitImage& image, int size) {
  const TReach reach = reachOf(size, image.cols);
  const std::uint64_t tail = tailBits(image.cols);
  const std::size_t wordsBefore = reach.before / kBitsPerWord + 1;
  const std::size_t wordsAfter = reach.window() / kBitsPerWord + 2;
  const std::size_t merged = wordsBefore + image.wordsPerRow;
  std::vector<std::uint64_t> runs(merged + wordsAfter);
  for (int y = 0; y < image.rows; ++y) {
    std::uint64_t* const row = image.row(y);
    if (isUniform(row, image.wordsPerRow, tail)) continue;
    std::fill(runs.begin(), runs.end(), kAllBits);
    std::copy_n(row, image.wordsPerRow, runs.begin() + static_cast<std::ptrdiff_t>(wordsBefore));
    runs[merged - 1] |= tail;
    growRuns(reach.window(), [&](std::size_t shift) {
      std::uint64_t* const run = runs.data();
      for (std::size_t i = 0; i < merged; ++i) run[i] &= bitsAt(run, i * kBitsPerWord + shift);
    });
    const std::size_t first = wordsBefore * kBitsPerWord - reach.before;
    for (std::size_t i = 0; i < image.wordsPerRow; ++i) row[i] = bitsAt(runs.data(), first + i * kBitsPerWord);
  }
}

// The 64 pixels of a whole word.
std::uint64_t packWord(const std::uint8_t* pixels, std::uint8_t low, std::uint8_t high) {
  const cv::v_uint8x16 lowest = cv::v_setall_u8(low);
  const cv::v_uint8x16 highest = cv::v_setall_u8(high);
  const cv::v_uint8x16 grey[] = {cv::v_load(pixels), cv::v_load(pixels + 16), cv::v_load(pixels + 32),
                                 cv::v_load(pixels + 48)};
  const cv::v_uint8x16 peak = cv::v_max(cv::v_max(grey[0], grey[1]), cv::v_max(grey[2], grey[3]));
  if (!cv::v_check_any(cv::v_max(peak, lowest) == peak)) return 0;
  std::uint64_t bits = 0;
  for (int i = 0; i < 4; ++i) {
    const cv::v_uint8x16 isInside = cv::v_min(cv::v_max(grey[i], lowest), highest) == grey[i];
    bits |= static_cast<std::uint64_t>(static_cast<unsigned>(cv::v_signmask(isInside))) << (16 * i);
  }
  return bits;
}

void unpackRow(const std::uint64_t* words, int count, std::uint8_t* pixels) {
  for (int x = 0; x < count; x += kBitsPerWord) {
    const std::uint64_t bits = words[x / kBitsPerWord];
    if (x + kBitsPerWord <= count && (bits == 0 || bits == kAllBits)) {
      std::memset(pixels + x, bits == 0 ? 0 : 255, kBitsPerWord);
      continue;
    }
    for (int i = 0; i < std::min(kBitsPerWord, count - x); ++i) {
      pixels[x + i] = static_cast<std::uint8_t>(0 - ((bits >> i) & 1U));
    }
  }
}

}  // namespace

bool packRange(const std::uint8_t* pixels, int count, std::uint8_t low, std::uint8_t high, std::uint64_t* words) {
  std::uint64_t any = 0;
  int x = 0;
  for (; x + kBitsPerWord <= count; x += kBitsPerWord) {
    *words = packWord(pixels + x, low, high);
    any |= *words++;
  }
  if (x == count) return any != 0;
  *words = 0;
  for (int i = 0; x + i < count; ++i) {
    if (low <= pixels[x + i] && pixels[x + i] <= high) *words |= std::uint64_t{1} << i;
  }
  return (any | *words) != 0;
}

TBitImage packPixelsFrom(const cv::Mat& grey, std::uint8_t level) {
  TBitImage image;
  image.rows = grey.rows;
  image.cols = grey.cols;
  image.wordsPerRow = wordsFor(grey.cols);
  image.words.resize(static_cast<std::size_t>(grey.rows) * image.wordsPerRow);
  for (int y = 0; y < grey.rows; ++y) packRange(grey.ptr<std::uint8_t>(y), grey.cols, level, 255, image.row(y));
  return image;
}

void invertBits(TBitImage& image) {
  for (std::uint64_t& word : image.words) word = ~word;
}

void erodeSquare(TBitImage& image, int size) {
  erodeColumns(image, size);
  erodeRows(image, size);
}

void unpackBits(const TBitImage& image, cv::Mat& grey) {
  for (int y = 0; y < image.rows; ++y) unpackRow(image.row(y), image.cols, grey.ptr<std::uint8_t>(y));
}

}  // namespace weld
