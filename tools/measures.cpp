#include "tools/measures.h"

#include "tools/cli_error.h"
#include "tools/names.h"
#include "tools/text.h"
#include "tools/trace_json.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace tool {
namespace {

// "left edge" -> "leftEdge"
std::string nameOf(TFeature feature) {
  std::string name;
  bool beginsWord = false;
  for (const char c : std::string(featureText(feature))) {
    if (c != ' ') {
      name += beginsWord ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
    }
    beginsWord = c == ' ';
  }
  return name;
}

TMeasure valueOf(const char* name, const char* unit, int digits, double TJointMeasurement::*field) {
  return {name, unit, digits, [field](const TJointMeasurement& m) { return m.*field; }, false};
}

template <typename TGet>
TMeasure ofPoint(TFeature feature, const char* what, TGet get) {
  const auto read = [feature, get](const TJointMeasurement& m) {
    const auto point = std::find_if(m.points.begin(), m.points.end(),
                                    [feature](const TFeaturePoint& p) { return p.feature == feature; });
    return point == m.points.end() ? TJointMeasurement::kNone : static_cast<double>(get(*point));
  };
  return {nameOf(feature) + what, "px", 2, read, true};
}

}  // namespace

std::vector<TMeasure> measuresOf(TWeldType type) {
  const auto confidence = [](const TJointMeasurement& m) {
    return m.isValid ? static_cast<double>(m.confidence) : TJointMeasurement::kNone;
  };
  std::vector<TMeasure> measures = {{"confidence", "", 3, confidence, false},
                                    valueOf("gapPx", "px", 2, &TJointMeasurement::gapPx),
                                    valueOf("mismatchPx", "px", 2, &TJointMeasurement::mismatchPx),
                                    valueOf("widthPx", "px", 2, &TJointMeasurement::widthPx),
                                    valueOf("depthPx", "px", 2, &TJointMeasurement::depthPx),
                                    valueOf("areaPx2", "px2", 1, &TJointMeasurement::areaPx2),
                                    valueOf("leftAngleDeg", "deg", 2, &TJointMeasurement::leftAngleDeg),
                                    valueOf("rightAngleDeg", "deg", 2, &TJointMeasurement::rightAngleDeg),
                                    valueOf("includedAngleDeg", "deg", 2, &TJointMeasurement::includedAngleDeg),
                                    valueOf("baseAngleDeg", "deg", 2, &TJointMeasurement::baseAngleDeg),
                                    valueOf("leftRadiusPx", "px", 1, &TJointMeasurement::leftRadiusPx),
                                    valueOf("rightRadiusPx", "px", 1, &TJointMeasurement::rightRadiusPx)};
  const TWeldJoint* const joint = findWeldJoint(type);
  for (const TFeature feature : joint != nullptr ? joint->features : std::vector<TFeature>()) {
    measures.push_back(ofPoint(feature, ".x", [](const TFeaturePoint& p) { return p.pos.x; }));
    measures.push_back(ofPoint(feature, ".y", [](const TFeaturePoint& p) { return p.pos.y; }));
    measures.push_back(ofPoint(feature, ".sigmaPx", [](const TFeaturePoint& p) { return p.sigmaPx; }));
  }
  return measures;
}

TMeasure findMeasure(TWeldType type, const std::string& name) {
  std::vector<std::string> names;
  for (const TMeasure& measure : measuresOf(type)) {
    if (measure.name == name) {
      return measure;
    }
    names.push_back(measure.name);
  }
  throw usageError("--objective: " + tool::nameOf(type) + " measures no '" + name + "': use " + join(names, ", "));
}

double marginOf(const TTraceCheck& test) {
  return isLowerLimit(test.kind) ? test.measured - test.limit : test.limit - test.measured;
}

std::vector<TTraceCheck> testsOf(const TFrameTrace& trace) {
  const TTraceAttempt* const attempt = decisiveAttempt(trace);
  std::vector<TTraceCheck> tests = attempt == nullptr ? std::vector<TTraceCheck>() : attempt->checks;
  tests.insert(tests.end(), trace.gate.begin(), trace.gate.end());
  tests.erase(std::remove_if(tests.begin(), tests.end(),
                             [](const TTraceCheck& test) { return !std::isfinite(marginOf(test)); }),
              tests.end());
  return tests;
}

}  // namespace tool
