// Joints and welding positions by name, as typed on the command line and in parameter files.
#pragma once

#include "scenes/scene.h"
#include "zelWeldDetect.h"

#include <string>
#include <vector>

namespace tool {

// The enumerator's name, "buttGap".
std::string nameOf(TWeldType type);
std::string nameOf(TWeldPosType pos);

// A joint that has a detector, by name or number. Case, '-' and '_' do not matter ("butt-gap", "buttGap"),
// and "gap" and "presence" are short forms. Throws a usage error for anything else.
TWeldType parseDetectorType(const std::string& text);

// A welding position, by name or number. Throws a usage error for anything else.
TWeldPosType parsePosition(const std::string& text);

// What simulate can draw: any joint, with a detector or without, "plain" and "blank".
scenes::TJoint parseJoint(const std::string& text);

// The detector that runs on frames of this joint: its own, or the presence check where there is none.
TWeldType detectorFor(scenes::TJoint joint);

// The joints that have a detector.
std::vector<TWeldType> detectorTypes();

// Names of the joints that have a detector, for help texts and messages: "buttGap, lap, ...".
std::string detectorTypeNames();
std::string positionNames();
std::string jointNames();

}  // namespace tool
