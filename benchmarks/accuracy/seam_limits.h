// Figures that may miss what is wanted, and by how much: the list of known misses and the limits of the short run.
#pragma once

#include "seam_figures.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace accuracy {

struct TLimit {
  double worst = 0.0;
  std::string cause;
};

// One for each line "row; figure; worst; cause" of a file. Its first line, "# sample: ...", says what they hold
// for.
struct TLimits {
  std::string sample;
  std::map<std::pair<std::string, std::string>, TLimit> rows;  // by row and figure
};

// Throws std::runtime_error for a file that cannot be read, and names the line that it does not understand.
TLimits readLimits(const std::string& path);

enum class TVerdict { reached, knownMiss, failed };

// A limit takes the place of what is wanted; of a range with two ends, of the end that it lies beyond.
TVerdict verdictOn(const TLimits& limits, const std::string& row, const TFigure& figure);

// Writes limits a little worse than the tables' figures: of those that miss what is wanted, or of all that are
// wanted. Causes are kept from the limits before; "not known" where there is none.
void writeLimits(const std::string& path, const TLimits& before, const std::vector<TTable>& tables, bool ofAll);

}  // namespace accuracy
