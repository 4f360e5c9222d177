#include "tools/names.h"

#include "tools/cli_error.h"
#include "tools/text.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <set>

namespace tool {
namespace {

using scenes::TJoint;

constexpr int kMaxSlips = 2;                 // letters
constexpr std::size_t kMinBeginning = 4;     // letters of a name that is cut off
constexpr std::size_t kMaxNameLetters = 64;  // of what can be a slip of anything

// What is left of a name when its spelling does not matter.
std::string bare(const std::string& text) {
  std::string letters;
  for (const char c : text) {
    if (c != '-' && c != '_' && c != '.') {
      letters += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
  }
  return letters;
}

std::string digitsOf(const std::string& text) {
  std::string digits;
  std::copy_if(text.begin(), text.end(), std::back_inserter(digits), [](char c) { return c >= '0' && c <= '9'; });
  return digits;
}

// Letters to insert, leave out or change to make one text of the other (the distance of Levenshtein).
int slipsBetween(const std::string& a, const std::string& b) {
  std::vector<int> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 0; i < a.size(); ++i) {
    int diagonal = row[0];
    row[0] = static_cast<int>(i) + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const int changed = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

const TWeldJoint* findJoint(const std::string& text) {
  const std::string wanted = bare(text);
  for (const TWeldJoint& joint : weldJoints()) {
    if (wanted == bare(joint.name) || wanted == bare(joint.shortName) ||
        wanted == std::to_string(static_cast<int>(joint.type))) {
      return &joint;
    }
  }
  return nullptr;
}

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

TWeldType parseDetectorType(const std::string& text) {
  const TWeldJoint* const joint = findJoint(text);
  if (joint == nullptr) {
    throw usageError("unknown joint type '" + text + "': use " + detectorTypeNames());
  }
  return joint->type;
}

TWeldPosType parsePosition(TWeldType type, const std::string& text) {
  const std::string wanted = bare(text);
  const std::vector<TWeldPosType>& positions = findWeldJoint(type)->positions;
  for (const TWeldPosType pos : positions) {
    if (wanted == weldPosText(pos) || wanted == std::to_string(static_cast<int>(pos))) {
      return pos;
    }
  }
  throw usageError(nameOf(type) + " knows no position '" + text + "': use " + namesOf(positions));
}

TJoint parseJoint(const std::string& text) {
  for (const TJoint joint : {TJoint::plain, TJoint::blank}) {
    if (bare(text) == scenes::nameOf(joint)) {
      return joint;
    }
  }
  const TWeldJoint* const joint = findJoint(text);
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

bool isNearMiss(const std::string& typed, const std::string& name) {
  const std::string a = bare(typed);
  const std::string b = bare(name);
  if (a.size() > kMaxNameLetters || digitsOf(a) != digitsOf(b)) {
    return false;
  }
  const bool isBeginning = a.size() >= kMinBeginning && b.compare(0, a.size(), a) == 0;
  return isBeginning || slipsBetween(a, b) <= kMaxSlips;
}

}  // namespace tool
