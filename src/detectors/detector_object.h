// The object that a detector works on.
#pragma once

#include "support/trace.h"
#include "zelWeldDetect.h"

#include "support/scratch.h"

namespace weld {

// Opens the column status of TBaseWeld to the detectors. Reusable over frames: every detector sets the
// status of its frame before it reads it.
class TDetectorObject : public TBaseWeld {
public:
  TTrace trace;  // what the stages report to

  using TBaseWeld::getSamplinePointsStatus;
  using TBaseWeld::isWeldPosContinueMissingPts;
  using TBaseWeld::isWeldPosMissingPts;
  using TBaseWeld::setSamplinePointsStatus;

  TScratch scratch;  // memory for the stages of a frame
};

}  // namespace weld
