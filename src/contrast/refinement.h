// The seam's centre line to fractions of a pixel, from the course that the strips gave.
#pragma once

#include "contrast/profiles.h"

#include <cstdint>

namespace weld {

// Where the mean profile shows the seam, px from the course.
struct TShapeEdges {
  float centre = 0.0F;
  float left = 0.0F;      // at half of the line's depth
  float right = 0.0F;     // of a step: the same place
  float risePx = 0.0F;    // of a step: over which it rises
  float contrast = 0.0F;  // ln(line / sides); of a step ln(right / left)
  float width() const { return right - left; }
};

// A stretch of the course, at the same stations as its profiles; lists are equally long.
struct TRefinedLine {
  explicit TRefinedLine(TMemory* memory) : across(memory), measured(memory), widthsPx(memory) {}
  int first = 0;  // station of the course
  double firstAlong = 0.0;
  TList<float> across;  // px of the view
  TList<std::uint8_t> measured;
  TList<float> widthsPx;
  TShapeEdges edges;
  int size() const { return static_cast<int>(across.size()); }
};

// Empty where too few stations show the seam.
TRefinedLine refineLine(const TCourse& course, const TProfiles& profiles, const TAlignment& alignment,
                        TTrait trait, TMemory* memory);

bool isEdge(TTrait trait);

}  // namespace weld
