// The most consistent way through the candidates. Internal to the ridge extraction.
#pragma once

#include "stripe/ridge_candidates.h"

#include <vector>

namespace weld {

struct TRidgeNode {
  int column = 0;  // index of the candidates' column
  TRidgeCandidate candidate;
};

// Nodes that follow each other without a break, left to right.
using TRidgePiece = std::vector<TRidgeNode>;

// The path of greatest total gain, cut at its breaks, without pieces too short to be a stripe.
std::vector<TRidgePiece> findRidgePath(const std::vector<TRidgeCandidates>& columns);

}  // namespace weld
