// A line along a view: one place across it per station.
#pragma once

#include "contrast/log_field.h"
#include "contrast/path.h"

namespace weld {

inline constexpr int kStationPx = 2 * kStripStep;  // from station to station

// Places in px of the view.
struct TCourse {
  explicit TCourse(TMemory* memory) : across(memory), slope(memory) {}
  double firstAlong = 0.0;
  TList<float> across;
  TList<float> slope;  // across per along

  int size() const { return static_cast<int>(across.size()); }
  double alongOf(int i) const { return firstAlong + i * kStationPx; }
};

// The path in px, smoothed over neighbouring strips.
TCourse courseOf(const TSeamPath& path, const TLogField& field, TMemory* memory);

}  // namespace weld
