// Chooses one candidate per column so that the chosen ones follow the stripe.
#pragma once

#include "stripe/region_scan.h"

#include <vector>

namespace weld {

// Candidates in column order. Column c, counted over the columns that have any, owns the candidates
// begin[c] .. begin[c + 1] - 1.
struct TCandidateTable {
  std::vector<TStripeCandidate> candidates;
  std::vector<int> begin;

  int columns() const { return static_cast<int>(begin.size()) - 1; }
};

// The centres of the stripe, left to right, at most one per column.
//
// A run takes one candidate from each of several neighbouring columns of the table, with steps below 50 px
// in y. The longest run of the whole table, the smoothest one among equally long ones (smallest sum of
// squared steps; then the leftmost, then the uppermost), is the stripe. The columns on either side of it are
// treated in the same way. Runs of 30 columns or less are dropped.
std::vector<cv::Point2f> selectStripeRuns(const TCandidateTable& table);

}  // namespace weld
