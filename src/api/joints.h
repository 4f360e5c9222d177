// The one table of joints: what each is called, knows and reads, and the rules that find it.
#pragma once

#include "api/joint_rivals.h"
#include "api/look.h"
#include "detectors/seam.h"
#include "zelWeldJoint.h"
#include "zelWeldSettings.h"

namespace weld {

// How the plain rules extract the stripe of a joint.
struct TExtractionRule {
  bool usesRidges = false;  // of the whole image, instead of edge pairs
  bool isTracked = true;    // near the previous stripe once a seam was found
};

struct TJointRules {
  TFindSeam find;
  TFindSeam findOwn;             // the default tracker's own way; null: the same
  TRivalTest rivalOf = nullptr;  // of a seam at a new place; null: the stripe may be anything
  const char* looksLike = "";    // said of a stripe that shows the joint
  bool (*measure)(const TSeam& seam, TMemory* memory, TJointMeasurement& m) = nullptr;  // null: nothing to measure
  std::size_t bytesPerColumn = 2048;  // of the lists that a frame works with
  TBand band;
  bool hasSeamPoint = true;
  bool isLocal = false;          // measured beside the seam point alone
  bool hasSecondChance = false;  // on ridges, where edge pairs give no seam
  // The tracking rules are coarser than those of a first detection: along an extended guide the latter are used.
  bool findsAnewOnGuide = false;
  TExtractionRule (*extraction)(const TWeldParams& params) = nullptr;  // null: the usual one
  bool (*hasSupport)(const TSeam& seam) = nullptr;                     // null: every found seam has
  // Tells the host about a reported seam; `frames` counts for it from frame to frame. Null: nothing to tell.
  void (*announce)(int& frames, const TSeam& seam, double stripeWidthPx) = nullptr;
};

struct TJoint {
  TWeldJoint info;
  TJointRules rules;
};

// Rules of the joints that the profile engine finds.
TJointRules profileRules(TFindSeam find);

// The joint of that type; null for a type without a row.
const TJoint* findJoint(TWeldType type);

}  // namespace weld
