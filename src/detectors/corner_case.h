// What every stage of the corner detector needs.
#pragma once

#include "detectors/corner_params.h"
#include "geometry/piece.h"
#include "support/list.h"
#include "trace/frame.h"

namespace weld {

struct TCornerCase {
  const TFrame& frame;
  TView<TWeldPointStatus> status;  // of the frame's columns
  const TCornerParams& params;
};

// A left and a right flank. Each holds its stripe points in ascending column order.
struct TFlankPair {
  TFittedLine left;
  TFittedLine right;
};

}  // namespace weld
