// The course through the strips that gathers most evidence: local alignment by dynamic programming (Smith and
// Waterman, Journal of Molecular Biology 147, 1981) over strip, column and slope.
#pragma once

#include "contrast/evidence.h"

namespace weld {

// One column per strip, from the first strip on; empty: there is none.
struct TSeamPath {
  explicit TSeamPath(TMemory* memory) : columns(memory) {}
  int firstStrip = 0;
  TList<int> columns;
  int score = 0;
  int turns = 0;  // steps to another slope
};

class TPathSearch {
public:
  TPathSearch(const TStrips& strips, TEvidence& evidence, TMemory* memory);

  // The best course in the evidence as it stands.
  TSeamPath findBest();

  // Takes the evidence along a course away, so that the next one is another one.
  void erase(const TSeamPath& path);

private:
  short* scoresOf(int shear, int strip) const { return scores.data() + strips.offset(shear, strip); }
  short* evidenceOf(int shear, int strip) const { return evidence.values.data() + strips.offset(shear, strip); }
  void fill();
  TSeamPath traceBack(int shear, int strip, int column) const;

  const TStrips& strips;
  TEvidence& evidence;
  TMemory* memory;
  TBuffer<short> scores;
};

}  // namespace weld
