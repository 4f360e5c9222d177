#include "lighting/weighted_sums.h"

#include "lighting/bit_image.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace weld {
namespace {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "byte 0 of a word must be its lowest one");

constexpr float kReflectiveGreyShare = 0.3F;
constexpr float kFullWeight = 1.0F;
constexpr float kReflectiveWeight = 0.2F;
constexpr std::uint8_t kNotReflective = 255;
constexpr int kSampleStep = 2;

// Every single-precision product 0.3 * grey is a whole number of these parts of a grey level.
constexpr int kPartBits = 24;
constexpr double kPartsPerGreyLevel = 1 << kPartBits;
// Below this many parts a double holds every partial sum exactly, so that the order of adding is immaterial.
constexpr std::uint64_t kExactParts = std::uint64_t{1} << 53;

constexpr std::array<std::uint64_t, 256> makeReflectiveParts() {
  std::array<std::uint64_t, 256> parts{};
  for (std::size_t grey = 0; grey < parts.size(); ++grey) {
    const auto reduced = static_cast<float>(static_cast<float>(grey) * kReflectiveGreyShare);
    parts[grey] = static_cast<std::uint64_t>(reduced * kPartsPerGreyLevel);
  }
  return parts;
}
constexpr std::array<std::uint64_t, 256> kReflectiveParts = makeReflectiveParts();

// Eight pixels in a word; the sampled ones in its four lanes of 16 bits.
constexpr int kWordPx = 8;
constexpr std::uint64_t kSampledBytes = 0x00FF00FF00FF00FF;
constexpr std::uint64_t kLaneCarries = 0x0100010001000100;
constexpr int kBlockPx = 256 * kWordPx;  // a lane holds the sum of 256 pixels

std::uint64_t loadSampledBytes(const std::uint8_t* pixels) {
  std::uint64_t word = 0;
  std::memcpy(&word, pixels, sizeof word);
  return word & kSampledBytes;
}

// True only when no sampled pixel of the mask is 0. Masks of 0 and 255 are told apart exactly; others may give
// false all the same, which costs time only.
bool isFreeOfReflections(const std::uint8_t* mask, int count) {
  std::uint64_t common = kSampledBytes;
  int x = 0;
#pragma GCC unroll 4
  for (; x + kWordPx <= count; x += kWordPx) common &= loadSampledBytes(mask + x);
  bool isFree = ((common + kSampledBytes) & kLaneCarries) == kLaneCarries;
  for (; x < count; x += kSampleStep) isFree = isFree && mask[x] != 0;
  return isFree;
}

std::uint64_t sumGrey(const std::uint8_t* grey, int count) {
  std::uint64_t lanes = 0;
  int x = 0;
#pragma GCC unroll 4
  for (; x + kWordPx <= count; x += kWordPx) lanes += loadSampledBytes(grey + x);
  std::uint64_t sum = 0;
  for (; lanes != 0; lanes >>= 16) sum += lanes & 0xFFFF;
  for (; x < count; x += kSampleStep) sum += grey[x];
  return sum;
}

std::uint64_t sumParts(const std::uint8_t* grey, const std::uint8_t* mask, int count) {
  std::uint64_t parts = 0;
  for (int x = 0; x < count; x += kSampleStep) {
    const std::uint64_t full = std::uint64_t{grey[x]} << kPartBits;
    parts += mask[x] != 0 ? full : kReflectiveParts[grey[x]];
  }
  return parts;
}

double sumInOrder(const cv::Mat& grey, const cv::Mat& mask) {
  double sum = 0.0;
  for (int y = 0; y < grey.rows; y += kSampleStep) {
    const auto* const greyRow = grey.ptr<std::uint8_t>(y);
    const auto* const maskRow = mask.ptr<std::uint8_t>(y);
    for (int x = 0; x < grey.cols; x += kSampleStep) {
      sum += maskRow[x] != 0 ? static_cast<float>(greyRow[x]) : greyRow[x] * kReflectiveGreyShare;
    }
  }
  return sum;
}

std::uint32_t powerOfTwoBelow(float value) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits >> 23;
}

// Adds the weight `count` times, rounding each time, to a sum of such weights. While the sum stays between two
// powers of two, every addition is rounded to the same step, as neither weight then lies midway between two steps:
// from 0.5 on half a step is coarser than the last bit of 0.2F, below 2^24 a step is 1 at most, and there the sum
// stops growing.
float addRepeatedly(float sum, float weight, int count) {
  const float step = (sum + weight) - sum;
  const float end = sum + step * static_cast<float>(count);
  if (powerOfTwoBelow(end) == powerOfTwoBelow(sum)) return end;
  for (int i = 0; i < count; ++i) sum += weight;
  return sum;
}

// Adds the weights of the pixels in `bits`, those in `full` counting in full, in their order.
float addWeights(float sum, std::uint64_t bits, std::uint64_t full) {
  if ((bits & ~full) == 0) return addRepeatedly(sum, kFullWeight, __builtin_popcountll(bits));
  if ((bits & full) == 0) return addRepeatedly(sum, kReflectiveWeight, __builtin_popcountll(bits));
  for (; bits != 0; bits >>= 1, full >>= 1) {
    if ((bits & 1U) != 0) sum += (full & 1U) != 0 ? kFullWeight : kReflectiveWeight;
  }
  return sum;
}

}  // namespace

double sumSampledGrey(const cv::Mat& grey, const cv::Mat& mask) {
  std::uint64_t parts = 0;
  for (int y = 0; y < grey.rows; y += kSampleStep) {
    for (int x = 0; x < grey.cols; x += kBlockPx) {
      const int count = std::min(kBlockPx, grey.cols - x);
      const std::uint8_t* const greyBlock = grey.ptr<std::uint8_t>(y) + x;
      const std::uint8_t* const maskBlock = mask.ptr<std::uint8_t>(y) + x;
      parts += isFreeOfReflections(maskBlock, count) ? sumGrey(greyBlock, count) << kPartBits
                                                     : sumParts(greyBlock, maskBlock, count);
    }
  }
  if (parts >= kExactParts) return sumInOrder(grey, mask);
  return static_cast<double>(parts) / kPartsPerGreyLevel;
}

float sumRangeWeights(const cv::Mat& grey, const cv::Mat& mask, std::uint8_t low, std::uint8_t high) {
  std::vector<std::uint64_t> inRange(wordsFor(grey.cols));
  float sum = 0.0F;
  for (int y = 0; y < grey.rows; ++y) {
    if (!packRange(grey.ptr<std::uint8_t>(y), grey.cols, low, high, inRange.data())) continue;
    for (int x = 0; x < grey.cols; x += kBitsPerWord) {
      const std::uint64_t bits = inRange[static_cast<std::size_t>(x / kBitsPerWord)];
      if (bits == 0) continue;
      std::uint64_t full = 0;
      packRange(mask.ptr<std::uint8_t>(y) + x, std::min(kBitsPerWord, grey.cols - x), kNotReflective,
                kNotReflective, &full);
      sum = addWeights(sum, bits, full);
    }
  }
  return sum;
}

}  // namespace weld
