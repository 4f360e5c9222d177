// The paths that could be the seam.
#pragma once

#include "contrast/families.h"
#include "contrast/path.h"

namespace weld {

// A family with its strips.
struct TSearched {
  TSearched(const TFamily& from, TMemory* memory)
      : family(from), field(family.view, family.band, memory), strips(field, family.shears, memory) {}
  TFamily family;
  TLogField field;
  TStrips strips;
};

struct TCandidate {
  const TSearched* where = nullptr;
  TSeamPath path;
};

inline constexpr double kSameLinePx = 16.0;  // from the middle of a line to the one that it is, or is part of

// The best paths of every family, the best one first.
TList<TCandidate> findPaths(const TList<TSearched>& searched, TTrait trait, TMemory* memory);

// Whether either of two paths lies, at its middle, on the other one.
bool isSameLine(const TCandidate& a, const TCandidate& b);

}  // namespace weld
