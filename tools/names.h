// Joints and welding positions by name, as typed on the command line and in parameter files. Which there are
// stands in the library's table of joints.
#pragma once

#include "scenes/joints.h"
#include "zelWeldDetect.h"

#include <string>

namespace tool {

// The enumerator's name, "buttGap"; the number of a type without a row in the table.
std::string nameOf(TWeldType type);

// The joint of a job; of one's own the name that it was given.
std::string nameOf(const TWeldJob& job);

// A joint that has a detector, by name or number. Case, '-' and '_' do not matter ("butt-gap", "buttGap"), and
// there are short forms ("gap"). Throws a usage error for anything else.
TWeldType parseDetectorType(const std::string& text);

// A welding position that the joint knows, by name or number. Throws a usage error for anything else.
TWeldPosType parsePosition(TWeldType type, const std::string& text);

// What simulate can draw: any joint, with a detector or without, "plain" and "blank".
scenes::TJoint parseJoint(const std::string& text);

// The detector that runs on frames of this joint: its own, or the presence check where there is none.
TWeldType detectorFor(scenes::TJoint joint);

// Names for help texts and messages, "buttGap, lap, ...": joints that have a detector, what simulate can draw, and
// positions that any joint knows, presets of a corner.
std::string detectorTypeNames();
std::string jointNames();
std::string positionNames();
std::string presetNames();

}  // namespace tool
