// How strongly every strip speaks for a seam, in units of the noise around it.
#pragma once

#include "contrast/strips.h"

namespace weld {

inline constexpr int kEvidenceUnit = 8;                  // per mean magnitude of the noise
inline constexpr int kMostEvidence = 7 * kEvidenceUnit;  // of one strip, or a blob would pass for a seam

// What is looked for in one run of the search.
enum class TTrait { dark, bright, risingEdge, fallingEdge };

// Values at the places of the strips; 0 in the margins.
struct TEvidence {
  TEvidence(const TStrips& strips, TMemory* memory) : values(memory, strips.size()) {}
  TBuffer<short> values;
};

void weighEvidence(const TStrips& strips, TTrait trait, TMemory* memory, TEvidence& evidence);

}  // namespace weld
