// What settings saw in frames, as columns that travel between processes: one row for each setting of each frame.
#pragma once

#include "tools/seam_figures.h"

#include <pybind11/pybind11.h>

#include <vector>

namespace python {

class TSeenRows {
public:
  void add(const tool::TSeamFrame& seen);
  pybind11::dict columns() const;

private:
  std::vector<tool::TSeamFrame> rows;
};

// The rows again. ValueError where columns are missing or unlike in length.
std::vector<tool::TSeamFrame> seenRows(const pybind11::dict& columns);

}  // namespace python
