// The centres a profile is laid over: wild ones dropped, the rest in runs of neighbours.
#pragma once

#include "profile/moments.h"
#include "stripe/stripe.h"

namespace weld {

struct TCentres {
  explicit TCentres(std::pmr::memory_resource* memory) : x(memory), y(memory), weight(memory), isBreak(memory) {}

  TList<double> x;               // ascending
  TList<double> y;               // px, down
  TList<double> weight;          // 0.05..1
  TList<unsigned char> isBreak;  // 1: this centre starts a new run, for a hole or a step before it

  int count() const { return static_cast<int>(x.size()); }
  double at(int i) const { return x[static_cast<std::size_t>(i)]; }
  // Columns without a centre before this one.
  double holeBefore(int i) const { return i > 0 ? at(i) - at(i - 1) - 1.0 : 0.0; }
};

// Drops what is not finite, beyond 1e6 px or not to the right of its predecessor, then in three passes runs of
// fewer than 2, 3 and 4 centres: once lone wild centres are gone, the runs that they had split join again.
//   sources  one per centre, or empty: all count as sure.
TCentres cleanCentres(TPointView points, TView<TCentreSource> sources, std::pmr::memory_resource* memory);

}  // namespace weld
