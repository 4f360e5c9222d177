#include "tools/image_size.h"

#include <algorithm>
#include <cctype>

namespace tool {
namespace {

using TSize = std::optional<TImageSize>;

bool startsWith(std::string_view file, std::string_view mark, std::size_t at = 0) {
  return file.size() >= at + mark.size() && file.compare(at, mark.size(), mark) == 0;
}

// `count` bytes as a number, the most significant one first or last. Bytes behind the end read as 0.
std::uint64_t numberAt(std::string_view file, std::size_t at, std::size_t count, bool isBigEndian) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t place = at + (isBigEndian ? i : count - 1 - i);
    number = number << 8 | (place < file.size() ? static_cast<unsigned char>(file[place]) : 0U);
  }
  return number;
}
std::uint64_t big(std::string_view file, std::size_t at, std::size_t count) {
  return numberAt(file, at, count, true);
}
std::uint64_t little(std::string_view file, std::size_t at, std::size_t count) {
  return numberAt(file, at, count, false);
}

TSize sizeOfPng(std::string_view file) {
  return TImageSize{big(file, 16, 4), big(file, 20, 4)};
}

TSize sizeOfBmp(std::string_view file) {
  constexpr std::uint64_t kOldHeader = 12;  // bytes
  if (little(file, 14, 4) == kOldHeader) {
    return TImageSize{little(file, 18, 2), little(file, 20, 2)};
  }
  const std::uint64_t height = little(file, 22, 4);  // of a picture that starts at its top negative
  return TImageSize{little(file, 18, 4), height > 0x7FFFFFFFU ? 0x100000000U - height : height};
}

TSize sizeOfWebp(std::string_view file) {
  if (startsWith(file, "VP8 ", 12)) {
    return TImageSize{little(file, 26, 2) & 0x3FFFU, little(file, 28, 2) & 0x3FFFU};
  }
  if (startsWith(file, "VP8L", 12)) {
    const std::uint64_t bits = little(file, 21, 4);
    return TImageSize{(bits & 0x3FFFU) + 1, (bits >> 14 & 0x3FFFU) + 1};
  }
  return TImageSize{little(file, 24, 3) + 1, little(file, 27, 3) + 1};
}

// Segments follow one another, each with its length, up to the one that starts a frame.
TSize sizeOfJpeg(std::string_view file) {
  std::size_t at = 2;
  while (at + 1 < file.size() && file[at] == '\xFF') {
    const std::uint64_t marker = big(file, at + 1, 1);
    const bool isFiller = marker == 0xFF;
    const bool isAlone = marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7);
    const bool isTable = marker == 0xC4 || marker == 0xC8 || marker == 0xCC;
    if (marker >= 0xC0 && marker <= 0xCF && !isTable) {
      return TImageSize{big(file, at + 7, 2), big(file, at + 5, 2)};
    }
    at += isFiller ? 1 : (isAlone ? 2 : 2 + static_cast<std::size_t>(big(file, at + 2, 2)));
  }
  return std::nullopt;
}

TSize sizeOfTiff(std::string_view file) {
  constexpr std::uint64_t kWidthTag = 256;
  constexpr std::uint64_t kHeightTag = 257;
  constexpr std::uint64_t kShort = 3;  // two bytes
  constexpr std::size_t kEntryBytes = 12;
  const bool isBigEndian = file[0] == 'M';
  const auto number = [&](std::size_t at, std::size_t count) { return numberAt(file, at, count, isBigEndian); };
  const auto list = static_cast<std::size_t>(number(4, 4));
  TImageSize size;
  for (std::size_t i = 0; i < number(list, 2); ++i) {
    const std::size_t entry = list + 2 + i * kEntryBytes;
    const std::uint64_t value = number(entry + 8, number(entry + 2, 2) == kShort ? 2 : 4);
    if (number(entry, 2) == kWidthTag) size.width = value;
    if (number(entry, 2) == kHeightTag) size.height = value;
  }
  return size;
}

// Two numbers as text; before them blanks and comments.
TSize sizeOfPnm(std::string_view file) {
  constexpr std::size_t kMaxDigits = 9;
  std::uint64_t numbers[2] = {0, 0};
  std::size_t at = 2;
  for (std::uint64_t& number : numbers) {
    while (at < file.size() && (std::isspace(static_cast<unsigned char>(file[at])) != 0 || file[at] == '#')) {
      at = file[at] == '#' ? std::min(file.find('\n', at), file.size()) : at + 1;
    }
    const std::size_t first = at;
    for (; at < file.size() && file[at] >= '0' && file[at] <= '9'; ++at) {
      number = number * 10 + static_cast<std::uint64_t>(file[at] - '0');
      if (at - first >= kMaxDigits) return std::nullopt;
    }
  }
  return TImageSize{numbers[0], numbers[1]};
}

TSize readSize(std::string_view file) {
  const bool isPnm = file.size() > 2 && file[0] == 'P' && file[1] >= '1' && file[1] <= '6';
  if (startsWith(file, "\x89PNG")) return sizeOfPng(file);
  if (startsWith(file, "\xFF\xD8")) return sizeOfJpeg(file);
  if (startsWith(file, "BM")) return sizeOfBmp(file);
  if (startsWith(file, "II*") || startsWith(file, {"MM\0*", 4})) return sizeOfTiff(file);
  if (startsWith(file, "RIFF") && startsWith(file, "WEBP", 8)) return sizeOfWebp(file);
  return isPnm ? sizeOfPnm(file) : std::nullopt;
}

}  // namespace

std::optional<TImageSize> declaredSize(std::string_view file) {
  const TSize size = readSize(file);
  return size && size->width > 0 && size->height > 0 ? size : std::nullopt;
}

}  // namespace tool
