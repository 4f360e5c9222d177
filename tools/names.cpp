#include "tools/names.h"

#include "tools/cli_error.h"
#include "tools/text.h"

#include <cctype>
#include <optional>

namespace tool {
namespace {

using scenes::TJoint;

struct TTypeRow {
  TWeldType type;
  std::string name;
  std::string shortForm;
  TJoint joint;  // how it is drawn
  bool hasDetector;
};

const std::vector<TTypeRow>& typeRows() {
  static const std::vector<TTypeRow> rows = {
      {TWeldType::buttGap, "buttGap", "gap", TJoint::buttGap, true},
      {TWeldType::lap, "lap", "", TJoint::lap, true},
      {TWeldType::corner, "corner", "", TJoint::corner, true},
      {TWeldType::none, "none", "blank", TJoint::blank, false},
      {TWeldType::plate, "plate", "", TJoint::plate, true},
      {TWeldType::uGroove, "uGroove", "", TJoint::uGroove, false},
      {TWeldType::vGroove, "vGroove", "", TJoint::vGroove, false},
      {TWeldType::singleBevel, "singleBevel", "", TJoint::singleBevel, false},
      {TWeldType::flareV, "flareV", "", TJoint::flareV, false},
      {TWeldType::flareBevel, "flareBevel", "", TJoint::flareBevel, false},
      {TWeldType::stripePresence, "stripePresence", "presence", TJoint::plain, true},
  };
  return rows;
}

struct TPosRow {
  TWeldPosType pos;
  std::string name;
};

const std::vector<TPosRow>& posRows() {
  static const std::vector<TPosRow> rows = {{TWeldPosType::centre, "centre"},
                                            {TWeldPosType::left, "left"},
                                            {TWeldPosType::right, "right"},
                                            {TWeldPosType::upper, "upper"},
                                            {TWeldPosType::lower, "lower"}};
  return rows;
}

// What is left of a name when its spelling does not matter.
std::string bare(const std::string& text) {
  std::string letters;
  for (const char c : text) {
    if (c != '-' && c != '_') {
      letters += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
  }
  return letters;
}

const TTypeRow* findType(const std::string& text) {
  const std::string wanted = bare(text);
  for (const TTypeRow& row : typeRows()) {
    const bool isShortForm = !row.shortForm.empty() && wanted == row.shortForm;
    if (wanted == bare(row.name) || isShortForm || wanted == std::to_string(static_cast<int>(row.type))) {
      return &row;
    }
  }
  return nullptr;
}

}  // namespace

std::string nameOf(TWeldType type) {
  for (const TTypeRow& row : typeRows()) {
    if (row.type == type) {
      return row.name;
    }
  }
  return std::to_string(static_cast<int>(type));
}

std::string nameOf(TWeldPosType pos) {
  for (const TPosRow& row : posRows()) {
    if (row.pos == pos) {
      return row.name;
    }
  }
  return std::to_string(static_cast<int>(pos));
}

TWeldType parseDetectorType(const std::string& text) {
  const TTypeRow* const row = findType(text);
  if (row == nullptr) {
    throw usageError("unknown joint type '" + text + "': use " + detectorTypeNames());
  }
  if (!row->hasDetector) {
    throw usageError("joint type '" + row->name + "' has no detector: use " + detectorTypeNames());
  }
  return row->type;
}

TWeldPosType parsePosition(const std::string& text) {
  const std::string wanted = bare(text);
  for (const TPosRow& row : posRows()) {
    if (wanted == row.name || wanted == std::to_string(static_cast<int>(row.pos))) {
      return row.pos;
    }
  }
  throw usageError("unknown position '" + text + "': use " + positionNames());
}

TJoint parseJoint(const std::string& text) {
  if (bare(text) == "plain") {
    return TJoint::plain;
  }
  const TTypeRow* const row = findType(text);
  if (row == nullptr) {
    throw usageError("unknown joint type '" + text + "': use " + jointNames());
  }
  return row->joint;
}

TWeldType detectorFor(TJoint joint) {
  for (const TTypeRow& row : typeRows()) {
    if (row.joint == joint && row.hasDetector) {
      return row.type;
    }
  }
  return TWeldType::stripePresence;
}

std::vector<TWeldType> detectorTypes() {
  std::vector<TWeldType> types;
  for (const TTypeRow& row : typeRows()) {
    if (row.hasDetector) {
      types.push_back(row.type);
    }
  }
  return types;
}

std::string detectorTypeNames() {
  std::vector<std::string> names;
  for (const TWeldType type : detectorTypes()) {
    names.push_back(nameOf(type));
  }
  return join(names, ", ");
}

std::string positionNames() {
  std::vector<std::string> names;
  for (const TPosRow& row : posRows()) {
    names.push_back(row.name);
  }
  return join(names, ", ");
}

std::string jointNames() {
  std::vector<std::string> names;
  for (const TTypeRow& row : typeRows()) {
    if (row.type != TWeldType::none && row.type != TWeldType::stripePresence) {
      names.push_back(row.name);
    }
  }
  return join(names, ", ") + ", plain, blank";
}

}  // namespace tool
