// How large an image is by what its file says at the beginning, before memory is given to it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tool {

struct TImageSize {
  std::uint64_t width = 0;  // px
  std::uint64_t height = 0;
};

// The size that a PNG, JPEG, BMP, TIFF, PBM, PGM, PPM or WebP file declares. Nothing for other files, and where it
// is cut off before that. Nobody has checked that the picture is there.
std::optional<TImageSize> declaredSize(std::string_view file);

}  // namespace tool
