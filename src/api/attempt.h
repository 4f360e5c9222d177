// One attempt at a frame: a stripe, and what a joint's rules find on it.
#pragma once

#include "api/joints.h"
#include "api/look.h"
#include "stripe/fused.h"
#include "stripe/ridge/ridge_stripe.h"

#include <limits>
#include <utility>

namespace weld {

// What an attempt found, and what it says about the stripe that it found it on.
struct TFound {
  explicit TFound(TMemory* memory) : seam(memory), stripe(memory) {}
  TFound(TSeam on, TStripe with, int pairs)
      : seam(std::move(on)), stripe(std::move(with)), edgePairColumns(pairs) {}

  TSeam seam;
  TStripe stripe;
  int edgePairColumns = 0;  // with a centre of an edge pair
};

// How an attempt extracts the stripe.
struct TExtraction {
  TStripeExtraction kind = TStripeExtraction::edgePairs;
  int minColumns = 0;     // automatic: ridges are asked where edge pairs follow the stripe through fewer columns,
  int leastColumns = 0;   // but not where they do so through fewer than these: it is elsewhere
  TColumnSpan near = {};  // and where they leave stripe behind in these
  int fillsFrom = std::numeric_limits<int>::max();  // columns of edge pairs; on as many ridges are sought only
                                                    // where these leave the stripe open, ...
  TPointView before = {};  // ... but in the holes of the last stripe: ridges did not fill them then, either
};

// A frame, the joint that is looked for in it, and what it may ask of the ridges.
struct TQuest {
  const TFrame& frame;
  const TJoint& joint;
  TRidgeSearch& ridges;
  bool grantsSecondChance = true;  // to joints whose rules have one
  bool refusesImpossible = false;  // seams at a point that is none of the image
  bool usesOwnRules = false;       // those of the default tracker where the joint has some
  bool givesAdvice = false;        // about failures, in the trace
};

// Extracts the stripe where the look says and runs the joint's rules on it.
TFound attempt(const TQuest& quest, const TLook& look, const TExtraction& extraction, const TPrevious& previous);

// The same where the joint's own rules look: near the previous stripe when a seam was found there.
TFound attemptByRule(const TQuest& quest, const TExtraction& extraction, const TPrevious& previous);

}  // namespace weld
