// The ridge extraction's work on whole rows, in vector code: lanes are columns. Internal to the ridge extraction.
#pragma once

namespace weld {

inline constexpr int kRidgeLevelUnit = 8;  // values of an averaged image per grey level

inline constexpr int kFoundMargin = 4;

// Sums of two rows that make the response of one row.
struct TRidgeBoxes {
  const short* above;  // the box over the ridge
  const short* upper;  // the ridge itself, twice two rows that may be the same
  const short* lower;
  const short* below;  // the box under the ridge
};

// Three rows of response one below the other, and the least response that counts in every column.
struct TRidgeRowTriple {
  const short* before;
  const short* here;
  const short* after;
  const short* least;
};

inline constexpr int kCorrelated = 4;

// Profiles of columns, as running sums: sums[i] holds the rows firstRow .. firstRow + i - 1. A lane without a
// profile has bins of no rows.
struct TRidgeProfiles {
  const int* sums[kCorrelated] = {};
  int firstRow[kCorrelated] = {};
  int lastRow[kCorrelated] = {};
  int binRows[kCorrelated] = {};  // read together
  double start[kCorrelated] = {};
  double back[kCorrelated] = {};  // grey levels
  double halfSupport[kCorrelated] = {};
};

struct TRidgeRows {
  // Sums of neighbouring pixels in units of the averaged images; an odd last pixel counts twice.
  void (*pairColumns)(const unsigned char* source, int columns, short* target);
  void (*addRows)(const short* a, const short* b, int columns, short* target);
  // Rounded means of the two rows in a row of sums; and of two columns as well, an odd last one counting twice.
  void (*halveSums)(const short* sums, int columns, short* target);
  void (*halveSumsAndColumns)(const short* sums, int columns, short* target);
  // Centre rows less twice the brighter one of the two boxes.
  void (*respond)(const TRidgeBoxes& boxes, int columns, short* response);
  // The columns in which the middle row counts and neither neighbour exceeds it, the upper one not even reaches
  // it. Returns how many. The list has room for kFoundMargin more than there are columns.
  int (*findMaxima)(const TRidgeRowTriple& rows, int columns, int* found);
  // Maximum of the correlation of each profile with the kernel (1 - u^2)^3, which comes close to a Gaussian of the
  // stripe's own sigma: the best linear estimate of position in white noise.
  void (*correlate)(const TRidgeProfiles& profiles, double* centres);
};

}  // namespace weld
