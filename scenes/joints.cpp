#include "scenes/joints.h"

#include <algorithm>

namespace scenes {
namespace {

template <typename TAccept>
std::vector<TDrawnJoint> jointsWhere(TAccept accept) {
  std::vector<TDrawnJoint> list;
  for (const TWeldJoint& joint : weldJoints()) {
    if (accept(joint)) list.push_back({jointOf(joint.type), joint.type});
  }
  return list;
}

std::vector<TSeamCase> casesOf(const std::vector<TDrawnJoint>& joints) {
  std::vector<TSeamCase> cases;
  for (const TDrawnJoint& row : joints) {
    for (const TWeldPosType pos : findWeldJoint(row.type)->positions) cases.push_back({row.joint, pos});
  }
  return cases;
}

const TWeldJoint* ownJoint(TJoint joint) {
  return joint == TJoint::plain ? nullptr : findWeldJoint(weldTypeOf(joint));
}

const char* nameWithoutJoint(TJoint joint) {
  return joint == TJoint::plain ? "plain" : "blank";
}

}  // namespace

const std::vector<TDrawnJoint>& drawnJoints() {
  static const std::vector<TDrawnJoint> joints = {{TJoint::buttGap, TWeldType::buttGap},
                                                  {TJoint::lap, TWeldType::lap},
                                                  {TJoint::corner, TWeldType::corner},
                                                  {TJoint::plate, TWeldType::plate},
                                                  {TJoint::uGroove, TWeldType::uGroove},
                                                  {TJoint::vGroove, TWeldType::vGroove},
                                                  {TJoint::singleBevel, TWeldType::singleBevel},
                                                  {TJoint::flareV, TWeldType::flareV},
                                                  {TJoint::flareBevel, TWeldType::flareBevel},
                                                  {TJoint::plain, TWeldType::stripePresence},
                                                  {TJoint::blank, TWeldType::none}};
  return joints;
}

const std::vector<TDrawnJoint>& detectedJoints() {
  static const std::vector<TDrawnJoint> joints = jointsWhere([](const TWeldJoint&) { return true; });
  return joints;
}

const std::vector<TDrawnJoint>& seamJoints() {
  static const std::vector<TDrawnJoint> joints =
      jointsWhere([](const TWeldJoint& joint) { return !joint.features.empty(); });
  return joints;
}

TWeldType weldTypeOf(TJoint joint) {
  const auto& rows = drawnJoints();
  return std::find_if(rows.begin(), rows.end(), [joint](const TDrawnJoint& row) { return row.joint == joint; })
      ->type;
}

TJoint jointOf(TWeldType type) {
  const auto& rows = drawnJoints();
  const auto row = std::find_if(rows.begin(), rows.end(), [type](const TDrawnJoint& r) { return r.type == type; });
  return row != rows.end() ? row->joint : TJoint::blank;
}

const char* nameOf(TJoint joint) {
  const TWeldJoint* const own = ownJoint(joint);
  return own != nullptr ? own->name : nameWithoutJoint(joint);
}

const char* shortNameOf(TJoint joint) {
  const TWeldJoint* const own = ownJoint(joint);
  return own != nullptr ? own->shortName : nameWithoutJoint(joint);
}

std::vector<TSeamCase> detectedCases() {
  return casesOf(detectedJoints());
}

std::vector<TSeamCase> seamCases() {
  return casesOf(seamJoints());
}

bool hasSeamPoint(TJoint joint) {
  const TWeldJoint* const own = findWeldJoint(weldTypeOf(joint));
  return own != nullptr && !own->features.empty();
}

std::string nameOf(const TSeamCase& seamCase) {
  const TWeldJoint* const joint = findWeldJoint(weldTypeOf(seamCase.joint));
  if (joint == nullptr) return nameWithoutJoint(seamCase.joint);
  const bool hasChoice = joint->positions.size() > 1;
  return joint->shortName + (hasChoice ? std::string("-") + weldPosText(seamCase.pos) : "");
}

}  // namespace scenes
