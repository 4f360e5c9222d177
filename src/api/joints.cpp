#include "api/joints.h"

#include "api/joint_parameters.h"
#include "api/measure.h"
#include "api/own_rules.h"
#include "detectors/corner.h"
#include "detectors/gap.h"
#include "detectors/groove.h"
#include "detectors/lap.h"
#include "detectors/plate.h"
#include "detectors/presence.h"

#include <algorithm>
#include <utility>

namespace weld {

namespace {

using TPos = TWeldPosType;

constexpr int kPlateBandPx = 40;

TExtractionRule presenceExtraction(const TWeldParams& params) {
  const TPresenceSettings settings = TPresenceSettings::of(params);
  return {settings.usesRidges, settings.searchesNear};
}

TJointRules rulesOf(TFindSeam find, decltype(TJointRules::measure) measure) {
  TJointRules rules;
  rules.find = std::move(find);
  rules.measure = measure;
  return rules;
}

TJointRules gapRules() {
  TJointRules rules = rulesOf(findGap, measureGap);
  rules.findOwn = findOwnGap;
  rules.rivalOf = rivalOfGap;
  rules.looksLike = "the stripe looks like a butt joint";
  rules.bytesPerColumn = 3072;
  rules.isLocal = true;
  return rules;
}

TJointRules lapRules() {
  TJointRules rules = rulesOf(findLap, measureLap);
  rules.findOwn = findOwnLap;
  rules.rivalOf = rivalOfLap;
  rules.looksLike = "the stripe looks like a lap";
  return rules;
}

TJointRules cornerRules() {
  TJointRules rules = rulesOf(findCorner, measureCorner);
  rules.findOwn = findOwnCorner;
  rules.rivalOf = rivalOfCorner;
  rules.looksLike = "the stripe looks like a corner";
  rules.hasSecondChance = true;
  rules.findsAnewOnGuide = true;
  rules.isLocal = true;
  return rules;
}

TJointRules plateRules() {
  TJointRules rules = rulesOf(findPlate, measurePlate);
  rules.findOwn = findOwnPlate;
  rules.band.halfPx = kPlateBandPx;
  rules.hasSupport = havePlateEndsSupport;
  rules.announce = showPlateInfo;
  return rules;
}

TJointRules presenceRules() {
  TJointRules rules = rulesOf(findPresence, nullptr);
  rules.hasSeamPoint = false;
  rules.extraction = presenceExtraction;
  return rules;
}

// The five grooves are one profile engine's, and read the same settings.
TJoint groove(TWeldType type, const char* name, const char* shortName, const char* meaning,
              const char* looksLike) {
  const std::vector<TFeature> features = {TFeature::root, TFeature::leftRoot, TFeature::rightRoot,
                                          TFeature::leftShoulder, TFeature::rightShoulder};
  const std::vector<TPos> positions = {TPos::centre, TPos::left, TPos::right, TPos::upper, TPos::lower};
  TJointRules rules = profileRules(findGroove);
  rules.rivalOf = rivalOfGroove;
  rules.looksLike = looksLike;
  return {{type, name, shortName, meaning, positions, features, grooveParameters()}, std::move(rules)};
}

const std::vector<TJoint>& joints() {
  static const std::vector<TJoint> rows = {
      {{TWeldType::buttGap,
        "buttGap",
        "gap",
        "one straight stripe broken by a gap",
        {TPos::centre, TPos::left, TPos::right},
        {TFeature::leftEdge, TFeature::rightEdge},
        gapParameters()},
       gapRules()},
      {{TWeldType::lap,
        "lap",
        "lap",
        "two pieces displaced in height",
        {TPos::centre, TPos::upper, TPos::lower},
        {TFeature::upperCorner, TFeature::lowerCorner},
        lapParameters()},
       lapRules()},
      {{TWeldType::corner,
        "corner",
        "corner",
        "two flanks that meet in one corner",
        {TPos::centre},
        {TFeature::corner},
        cornerParameters()},
       cornerRules()},
      {{TWeldType::plate,
        "plate",
        "plate",
        "the highest straight piece and its two ends",
        {TPos::centre, TPos::left, TPos::right},
        {TFeature::leftEnd, TFeature::rightEnd},
        plateParameters()},
       plateRules()},
      groove(TWeldType::uGroove, "uGroove", "u", "two steep walls and a round bottom",
             "the stripe looks like a U groove"),
      groove(TWeldType::vGroove, "vGroove", "v", "two flanks between two plates",
             "the stripe looks like a V groove"),
      groove(TWeldType::singleBevel, "singleBevel", "bevel", "one flank and one upright wall",
             "the stripe looks like a single bevel groove"),
      groove(TWeldType::flareV, "flareV", "flareV", "two round edges side by side",
             "the stripe looks like a flare V groove"),
      groove(TWeldType::flareBevel, "flareBevel", "flareBevel", "a round edge beside a plate",
             "the stripe looks like a flare bevel groove"),
      {{TWeldType::stripePresence,
        "stripePresence",
        "presence",
        "is the stripe there, as in the frame before?",
        {TPos::centre},
        {},
        presenceParameters()},
       presenceRules()},
  };
  return rows;
}

}  // namespace

const TJoint* findJoint(TWeldType type) {
  const auto row =
      std::find_if(joints().begin(), joints().end(), [type](const TJoint& j) { return j.info.type == type; });
  return row != joints().end() ? &*row : nullptr;
}

TJointRules profileRules(TFindSeam find) {
  TJointRules rules = rulesOf(std::move(find), measureGroove);
  rules.bytesPerColumn = 4096;
  rules.band.coversGuide = true;  // of a deep groove
  return rules;
}

}  // namespace weld

const std::vector<TWeldJoint>& weldJoints() {
  static const std::vector<TWeldJoint> infos = [] {
    std::vector<TWeldJoint> list;
    for (const weld::TJoint& joint : weld::joints()) list.push_back(joint.info);
    return list;
  }();
  return infos;
}

const TWeldJoint* findWeldJoint(TWeldType type) {
  const weld::TJoint* const joint = weld::findJoint(type);
  return joint != nullptr ? &joint->info : nullptr;
}

const TWeldParameter* findWeldParameter(const TWeldJoint& joint, const std::string& name) {
  const auto row = std::find_if(joint.parameters.begin(), joint.parameters.end(),
                                [&](const TWeldParameter& p) { return name == p.name || name == p.field; });
  return row != joint.parameters.end() ? &*row : nullptr;
}

const char* weldPosText(TWeldPosType pos) {
  switch (pos) {
    case TWeldPosType::centre:
      return "centre";
    case TWeldPosType::left:
      return "left";
    case TWeldPosType::right:
      return "right";
    case TWeldPosType::upper:
      return "upper";
    case TWeldPosType::lower:
      return "lower";
  }
  return "unknown";
}

const char* featureText(TFeature feature) {
  switch (feature) {
    case TFeature::root:
      return "root";
    case TFeature::leftRoot:
      return "left root";
    case TFeature::rightRoot:
      return "right root";
    case TFeature::leftShoulder:
      return "left shoulder";
    case TFeature::rightShoulder:
      return "right shoulder";
    case TFeature::leftEdge:
      return "left edge";
    case TFeature::rightEdge:
      return "right edge";
    case TFeature::upperCorner:
      return "upper corner";
    case TFeature::lowerCorner:
      return "lower corner";
    case TFeature::corner:
      return "corner";
    case TFeature::leftEnd:
      return "left end";
    case TFeature::rightEnd:
      return "right end";
  }
  return "unknown";
}
