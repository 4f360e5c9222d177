// The object that a detector works on.
#pragma once

#include "stripe/stripe_scratch.h"
#include "support/trace.h"
#include "zelWeldDetect.h"

namespace weld {

// Opens the column status of TBaseWeld to the detectors. Reusable over frames: every detector sets the
// status of its frame before it reads it.
class TDetectorObject : public TBaseWeld {
public:
  TTrace trace;            // what the stages report to
  TStripeScratch scratch;  // what they work in

  using TBaseWeld::getSamplinePointsStatus;
  using TBaseWeld::isWeldPosContinueMissingPts;
  using TBaseWeld::isWeldPosMissingPts;
  using TBaseWeld::setSamplinePointsStatus;
};

}  // namespace weld
