// Places where a column may hold the stripe. Internal to the ridge extraction.
#pragma once

#include "stripe/ridge/ridge_response.h"

#include <opencv2/core.hpp>

#include <array>
#include <memory_resource>
#include <vector>

namespace weld {

struct TRidgeCandidate {
  int y = 0;              // image row, twice: rows and half rows
  int contrast = 0;       // grey levels times kRidgeUnit
  int widthPx = 0;        // scale of the strongest response
  int excess = 0;         // contrast over the least that counts, grey levels times kRidgeUnit
  bool isStrong = false;  // a stripe by itself; the others only continue one
};

// The strongest candidates of a column, strongest first once merged.
struct TRidgeCandidates {
  static constexpr int kMax = 6;
  int count = 0;
  std::array<TRidgeCandidate, kMax> items;
};

// Candidates of every kRidgeColumnStep image columns, left to right.
std::pmr::vector<TRidgeCandidates> findRidgeCandidates(const std::pmr::vector<TRidgeLevel>& levels,
                                                       const std::pmr::vector<TRidgeScale>& scales,
                                                       double minContrast, std::pmr::memory_resource* memory);

}  // namespace weld
