// The most consistent way through the candidates. Internal to the ridge extraction.
#pragma once

#include "stripe/ridge/ridge_candidates.h"

#include <memory_resource>
#include <vector>

namespace weld {

struct TRidgeNode {
  int column = 0;  // index of the candidates' column
  TRidgeCandidate candidate;
};

// Nodes that follow each other without a break, left to right.
using TRidgePiece = std::pmr::vector<TRidgeNode>;

// The path of greatest total gain, cut at its breaks, without pieces too short to be a stripe.
std::pmr::vector<TRidgePiece> findRidgePath(const std::pmr::vector<TRidgeCandidates>& columns,
                                            std::pmr::memory_resource* memory);

}  // namespace weld
