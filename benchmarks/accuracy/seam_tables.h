// The tables of a run.
#pragma once

#include "seam_figures.h"
#include "seam_run.h"

namespace accuracy {

// Seams found, errors, false reports, recognition, and what confidence and sigma are worth. Subjects and levels
// that the run left out have no rows.
std::vector<TTable> tablesOf(const TRun& run);

// Of seam_claims.cpp: what the answers say about themselves.
TTable confidenceTable(const TRun& run);
TTable sigmaTable(const TRun& run);

}  // namespace accuracy
