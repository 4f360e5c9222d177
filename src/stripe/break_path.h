// Places where a stripe may break, followed from frame to frame: speckle and lost stretches are new in every
// frame, a gap is not.
#pragma once

#include "support/view.h"

#include <array>
#include <cstddef>

namespace weld {

struct TBreakPlace {
  float x = 0.0F;  // px
  float widthPx = 0.0F;
  float score = 0.0F;  // of one frame, or of all frames so far
};

// The surest places, highest score first.
struct TBreakPlaces {
  static constexpr std::size_t kMost = 8;
  std::array<TBreakPlace, kMost> all{};
  int count = 0;

  TView<TBreakPlace> view() const { return {all.data(), static_cast<std::size_t>(count)}; }
};

// The places of a frame after those of the frames before: one of nearly the same place and width adds to the
// score, which fades from frame to frame.
TBreakPlaces follow(const TBreakPlaces& before, TView<TBreakPlace> seen);

// Score of the place at that column, and the highest one elsewhere; 0 without any.
struct TBreakScore {
  double here = 0.0;
  double elsewhere = 0.0;
};
TBreakScore scoreAt(const TBreakPlaces& places, float x);

}  // namespace weld
