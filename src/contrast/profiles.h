// Brightness across a course, one profile per station, and their common shape.
#pragma once

#include "contrast/course.h"

namespace weld {

inline constexpr int kProfileReach = 40;  // px on either side of the course
inline constexpr int kProfileSize = 2 * kProfileReach + 1;

// Brightness relative to the profile's mean, less 1.
class TProfiles {
public:
  TProfiles(const TGreyView& view, const TCourse& course, TMemory* memory);
  // Each with its neighbours, so many on either side: less noise, and less detail along the course.
  TProfiles(const TProfiles& single, int reach, TMemory* memory);

  int count() const { return stations; }
  const float* of(int station) const {
    return values.data() + static_cast<std::ptrdiff_t>(station) * kProfileSize;
  }
  // Adds a profile as seen so many px aside of the course, between pixels as well; beyond the reach its outermost
  // value.
  void addShifted(int station, float shift, float* sums) const;

private:
  int stations;
  TBuffer<float> values;
};

// How far every station's seam lies from the course, and how much its profile is like the others.
struct TAlignment {
  TAlignment(int stations, TMemory* memory)
      : shift(static_cast<std::size_t>(stations), 0.0F, memory),
        likeness(static_cast<std::size_t>(stations), 1.0F, memory),
        depth(static_cast<std::size_t>(stations), 1.0F, memory),
        shape(memory) {}
  TList<float> shift;     // px
  TList<float> likeness;  // -1..1
  TList<float> depth;     // of the seam against the mean profile's: 1 as deep
  TList<float> shape;     // mean of the aligned profiles
};

// Turn by turn the mean profile and every station's place in it.
TAlignment alignProfiles(const TProfiles& profiles, TMemory* memory);

}  // namespace weld
