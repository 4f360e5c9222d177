#include "tools/names.h"

#include "tools/cli_error.h"
#include "tools/text.h"

#include <algorithm>
#include <set>

namespace tool {
namespace {

using scenes::TJoint;

std::string namesOf(const std::vector<TWeldPosType>& positions) {
  std::vector<std::string> names(positions.size());
  std::transform(positions.begin(), positions.end(), names.begin(), weldPosText);
  return join(names, ", ");
}

}  // namespace

std::string nameOf(TWeldType type) {
  const TWeldJoint* const joint = findWeldJoint(type);
  return joint != nullptr ? joint->name : std::to_string(static_cast<int>(type));
}

std::string nameOf(const TWeldJob& job) {
  if (!job.ownJoint) {
    return nameOf(job.params.weldType);
  }
  return job.ownJoint->name.empty() ? "own joint" : job.ownJoint->name;
}

TWeldType parseDetectorType(const std::string& text) {
  const TWeldJoint* const joint = findWeldJoint(text);
  if (joint == nullptr) {
    throw usageError("unknown joint type '" + text + "': use " + detectorTypeNames());
  }
  return joint->type;
}

TWeldPosType parsePosition(TWeldType type, const std::string& text) {
  TWeldParams params;
  params.weldType = type;
  const std::string problem = setWeldPosition(params, text);
  if (!problem.empty()) {
    throw usageError(problem);
  }
  return params.weldPosType;
}

TJoint parseJoint(const std::string& text) {
  for (const TJoint joint : {TJoint::plain, TJoint::blank}) {
    if (text == scenes::nameOf(joint)) {
      return joint;
    }
  }
  const TWeldJoint* const joint = findWeldJoint(text);
  if (joint == nullptr) {
    throw usageError("unknown joint type '" + text + "': use " + jointNames());
  }
  return scenes::jointOf(joint->type);
}

TWeldType detectorFor(TJoint joint) {
  const TWeldJoint* const own = findWeldJoint(scenes::weldTypeOf(joint));
  return own != nullptr ? own->type : TWeldType::stripePresence;
}

std::string detectorTypeNames() {
  std::vector<std::string> names;
  for (const scenes::TDrawnJoint& joint : scenes::detectedJoints()) {
    names.push_back(nameOf(joint.type));
  }
  return join(names, ", ");
}

std::string jointNames() {
  std::vector<std::string> names;
  for (const scenes::TDrawnJoint& joint : scenes::drawnJoints()) {
    names.emplace_back(scenes::nameOf(joint.joint));
  }
  return join(names, ", ");
}

std::string positionNames() {
  std::set<TWeldPosType> known;
  for (const TWeldJoint& joint : weldJoints()) {
    known.insert(joint.positions.begin(), joint.positions.end());
  }
  return namesOf({known.begin(), known.end()});
}

std::string presetNames() {
  std::vector<std::string> names;
  for (const TCornerPreset& preset : cornerPresets()) {
    names.emplace_back(preset.name);
  }
  return join(names, ", ");
}

}  // namespace tool
