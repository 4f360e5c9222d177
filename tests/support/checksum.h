// Results folded into one number, to tell whether two runs gave the same bits.
#pragma once

#include "zelWeldDetect.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>

// FNV-1a (Fowler, Noll and Vo, 1991).
class TChecksum {
public:
  void add(const void* data, std::size_t size) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < size; ++i) value = (value ^ bytes[i]) * 0x01000193U;
  }

  void add(std::initializer_list<double> numbers) {
    for (const double number : numbers) add(&number, sizeof number);
  }

  // All but the seam point.
  void add(const TWeldLineRes& result) {
    add({result.isFound ? 1.0 : 0.0, result.auxVal1, result.auxVal2, result.auxVal3, result.auxVal4,
         result.trackVal});
    add(result.stripePts.data(), result.stripePts.size() * sizeof(cv::Point2f));
  }

  std::uint32_t value = 0x811C9DC5U;
};

inline std::uint32_t checksumOf(const TWeldLineRes& result) {
  TChecksum checksum;
  checksum.add(result);
  checksum.add(&result.weldPos, sizeof result.weldPos);
  return checksum.value;
}
