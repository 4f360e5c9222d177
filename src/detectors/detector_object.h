// The object that a detector works on.
#pragma once

#include "stripe/stripe_scratch.h"
#include "support/trace.h"
#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <vector>

namespace weld {

// How the front end is to look for the stripe. The default is what the detectors' own rules say.
struct TStripeSearch {
  TStripeExtraction extraction = TStripeExtraction::edgePairs;
  // Stripe that the search follows to its ends and no farther, in column order, whatever the previous result was;
  // the whole image when it is empty. Null: the detector's own choice.
  const std::vector<cv::Point2f>* guide = nullptr;
  // Automatic extraction asks the ridges where edge pairs follow the stripe through fewer columns.
  int minColumns = 0;
  // A corner that is not found is looked for once more on ridges.
  bool hasSecondChance = true;
};

// What the front end found.
struct TStripeMeasure {
  int columns = 0;       // with a centre
  double widthPx = 0.0;  // most frequent one
  bool hasAskedRidges = false;
};

// Opens the column status of TBaseWeld to the detectors. Reusable over frames: every detector sets the
// status of its frame before it reads it.
class TDetectorObject : public TBaseWeld {
public:
  TTrace trace;            // what the stages report to
  TStripeScratch scratch;  // what they work in
  TStripeSearch search;
  TStripeMeasure stripe;  // set by the front end

  using TBaseWeld::getSamplinePointsStatus;
  using TBaseWeld::isWeldPosContinueMissingPts;
  using TBaseWeld::isWeldPosMissingPts;
  using TBaseWeld::setSamplinePointsStatus;
  using TBaseWeld::swapSamplinePointsStatus;
};

}  // namespace weld
