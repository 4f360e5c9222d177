// The contrast search's work on whole rows of strip sums. Internal to the contrast search.
#pragma once

namespace weld {

// Limits and prices of a path, in the units of the evidence.
struct TPathPrices {
  short least = 0;  // evidence per strip that a path must have to gain
  short slip = 0;   // of one column aside
  short turn = 0;   // of the next slope
};

// Rows of scores of the strip before, at the columns that a path of this slope comes from; those of the slopes
// beside it may be null.
struct TPathRows {
  const short* same = nullptr;
  const short* lower = nullptr;
  const short* upper = nullptr;
};

inline constexpr int kLeastRowColumns = 16;

// Rows have kLeastRowColumns columns or more, of sumMagnitudes any number.
struct TContrastRows {
  void (*sumEight)(const short* const* rows, int columns, short* sums);
  // Rounded down means of values so far apart.
  void (*meanOfTwo)(const short* values, int apart, int columns, short* means);
  // How much darker the middle is than both sides.
  void (*respondDark)(const short* left, const short* middle, const short* right, int columns, short* response);
  // How much brighter.
  void (*respondBright)(const short* left, const short* middle, const short* right, int columns, short* response);
  // The near difference less half of what the far one differs from it.
  void (*respondEdge)(const short* const* sides, int columns, short* response);
  int (*highest)(const short* values, int columns);  // 0 where all are below it
  int (*sumMagnitudes)(const short* values, int columns);
  // evidence = max(evidence, response * factor / 65536), for responses above 0, and at most `most`.
  void (*rate)(const short* response, const unsigned short* factors, int most, int columns, short* evidence);
  // scores = max(0, best way here) + evidence - least.
  void (*advance)(const TPathRows& before, const short* evidence, const TPathPrices& prices, int columns,
                  short* scores);
};

}  // namespace weld
