// The joints of the library beside the scenes that draw them. What is detected, and at which positions, stands in
// the library's own table (weldJoints()).
#pragma once

#include "scenes/scene.h"

#include <string>
#include <vector>

namespace scenes {

struct TDrawnJoint {
  TJoint joint = TJoint::blank;
  TWeldType type = TWeldType::none;
};

// Every TJoint once. A plain stripe stands for the presence check, a blank frame for no joint.
const std::vector<TDrawnJoint>& drawnJoints();

// Those that the library has a detector for, in the order of weldJoints(); and of them those with a seam point.
const std::vector<TDrawnJoint>& detectedJoints();
const std::vector<TDrawnJoint>& seamJoints();

TWeldType weldTypeOf(TJoint joint);
TJoint jointOf(TWeldType type);  // blank for a type without a scene

// The library's name of the joint, "buttGap", or its short one, "gap"; of those without a joint "plain" and
// "blank".
const char* nameOf(TJoint joint);
const char* shortNameOf(TJoint joint);

// A joint and the point of it that is looked for.
struct TSeamCase {
  TJoint joint = TJoint::blank;
  TWeldPosType pos = TWeldPosType::centre;
};

// Every detected joint, or those with a seam point, at every position that it knows.
std::vector<TSeamCase> detectedCases();
std::vector<TSeamCase> seamCases();

bool hasSeamPoint(TJoint joint);

// "gap-left"; "corner" and "presence" for joints that know one position only.
std::string nameOf(const TSeamCase& seamCase);

}  // namespace scenes
