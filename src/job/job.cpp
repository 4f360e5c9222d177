// Jobs out of texts, and texts out of jobs.
#include "zelWeldJob.h"

#include "job/job_fields.h"
#include "job/near_miss.h"
#include "job/object_writer.h"
#include "zelWeldDetect.h"

#include <algorithm>

namespace weld {

namespace {

using TKind = TJsonNode::TKind;

constexpr int kVersion = 1;
constexpr const char* kVersionKey = "zelWeldJob";

std::string jointNames() {
  std::vector<std::string> names;
  for (const TWeldJoint& joint : weldJoints()) names.emplace_back(joint.name);
  return listOf(names);
}

// A name or number as it would be typed.
std::string typed(const TJsonNode& node) {
  return node.kind == TKind::text ? node.text : describe(node);
}

// Reads joint and position under the keys that the form has for them.
void readJoint(TObjectReader& reader, const char* key, TWeldType instead, TWeldParams& params) {
  const TJsonNode* const member = reader.find(key);
  const TWeldJoint* joint = findWeldJoint(instead);
  if (joint == nullptr && member != nullptr) joint = findWeldJoint(typed(*member));
  if (joint != nullptr) {
    initWeldParameters(joint->type, params, TWeldPosType::centre);
  } else if (member != nullptr) {
    reader.refuse(*member, "unknown joint type '" + typed(*member) + "': use " + jointNames());
  } else {
    reader.refuse(reader.whole(), std::string("names no joint: give ") + key + " one of " + jointNames());
  }
}

void readPosition(TObjectReader& reader, const char* key, TWeldParams& params) {
  const TJsonNode* const member = reader.find(key);
  if (member == nullptr || findWeldJoint(params.weldType) == nullptr) return;
  const std::string problem = setWeldPosition(params, typed(*member));
  if (!problem.empty()) reader.refuse(*member, problem);
}

// Every member but those with these keys is a parameter, by name or field.
void readParameters(TObjectReader& reader, const std::vector<std::string>& otherKeys, TWeldParams& params) {
  const TWeldJoint* const joint = findWeldJoint(params.weldType);
  std::vector<const TWeldParameter*> given;
  for (const TJsonNode& member : reader.whole().items) {
    reader.find(member.key.c_str());
    const bool isOther = std::find(otherKeys.begin(), otherKeys.end(), member.key) != otherKeys.end();
    if (isOther || joint == nullptr) continue;
    const std::string problem = setWeldParameter(params, member.key, describe(member));
    if (!problem.empty()) reader.refuse(member, problem);
    const TWeldParameter* const parameter = findWeldParameter(*joint, member.key);
    if (std::find(given.begin(), given.end(), parameter) != given.end() && parameter != nullptr)
      reader.refuse(member, "sets " + weldParameterLabel(*parameter) + " twice, by either name");
    given.push_back(parameter);
  }
}

void readImage(TObjectReader& reader, TImagePreparation& preparation) {
  reader.object("region", [&](TObjectReader& region) { visitRegion(region, preparation.region.emplace()); });
  reader.count("rotationDeg", preparation.rotationDeg, 0);
  if (preparation.rotationDeg % 90 != 0 || preparation.rotationDeg > 270)
    reader.refuse(reader.whole(), "image.rotationDeg must be 0, 90, 180 or 270");
  reader.choice("channel", preparation.channel, channelNames());
}

void readOwnJoint(TObjectReader& reader, TWeldJob& job) {
  reader.object("ownJoint", [&](TObjectReader& joint) {
    visitTemplate(joint, job.ownJoint.emplace());
    const std::string problem = findTemplateProblem(*job.ownJoint);
    if (!problem.empty()) joint.refuse(joint.whole(), "ownJoint: " + problem);
  });
}

void readJob(TObjectReader& reader, TWeldType instead, TWeldJob& job) {
  std::int32_t version = kVersion;
  reader.count(kVersionKey, version, 1);
  if (version != kVersion)
    reader.refuse(reader.whole(), "this is a job of version " + std::to_string(version) +
                                      "; this release reads version " + std::to_string(kVersion));
  const auto readParams = [&](TObjectReader& each) { readParameters(each, {}, job.params); };
  if (instead == TWeldType::none) readOwnJoint(reader, job);
  if (!job.ownJoint) {
    readJoint(reader, "joint", instead, job.params);
    readPosition(reader, "position", job.params);
    reader.object("parameters", readParams);
  }
  reader.object("tracker", [&](TObjectReader& each) { visitTracker(each, job.tracker); });
  reader.object("image", [&](TObjectReader& each) { readImage(each, job.preparation); });
}

// A parameter file: one flat object of parameters under names of TWeldParams.
void readParameterFile(TObjectReader& reader, TWeldType instead, TWeldJob& job) {
  readJoint(reader, "weldType", instead, job.params);
  readPosition(reader, "weldPosType", job.params);
  readParameters(reader, {"weldType", "weldPosType"}, job.params);
}

bool hasKey(const TJsonNode& object, const char* key) {
  return std::any_of(object.items.begin(), object.items.end(), [&](const TJsonNode& m) { return m.key == key; });
}

nlohmann::ordered_json valueOf(const TWeldParams& params, const TWeldParameter& parameter) {
  const double value = parameter.value.get(params);
  if (parameter.value.kind == TParameterKind::flag) return value != 0.0;
  if (parameter.value.kind == TParameterKind::count) return static_cast<std::int64_t>(value);
  return value;
}

void writeJoint(nlohmann::ordered_json& text, const TWeldParams& params) {
  const TWeldJoint* const joint = findWeldJoint(params.weldType);
  text["joint"] = joint != nullptr ? joint->name : "none";
  text["position"] = weldPosText(params.weldPosType);
  text["parameters"] = nlohmann::ordered_json::object();
  if (joint == nullptr) return;
  for (const TWeldParameter& parameter : joint->parameters)
    text["parameters"][parameter.name] = valueOf(params, parameter);
}

void writeImage(TObjectWriter& writer, TImagePreparation preparation) {
  if (preparation.region)
    writer.object("region", [&](TObjectWriter& region) { visitRegion(region, *preparation.region); });
  writer.count("rotationDeg", preparation.rotationDeg, 0);
  writer.choice("channel", preparation.channel, channelNames());
}

}  // namespace

}  // namespace weld

using namespace weld;

TJobReading parseWeldJob(std::string_view text, TWeldType jointInstead) {
  TJsonTree tree = readJson(text);
  TJobReading reading;
  reading.problem = std::move(tree.problem);
  if (reading.problem.empty() && tree.root.kind != TKind::object)
    reading.problem = atLine(tree.root.line, "holds no JSON object");
  if (reading.problem.empty()) {
    TObjectReader reader(tree.root, "", reading.problem);
    if (hasKey(tree.root, kVersionKey)) {
      readJob(reader, jointInstead, reading.job);
    } else {
      readParameterFile(reader, jointInstead, reading.job);
    }
  }
  if (!reading.problem.empty()) reading.job = TWeldJob();
  return reading;
}

std::string writeWeldJob(const TWeldJob& job) {
  nlohmann::ordered_json text = {{kVersionKey, kVersion}};
  TObjectWriter writer(text);
  if (job.ownJoint) {
    TJointTemplate joint = *job.ownJoint;
    writer.object("ownJoint", [&](TObjectWriter& each) { visitTemplate(each, joint); });
  } else {
    writeJoint(text, job.params);
  }
  TTrackerOptions tracker = job.tracker;
  writer.object("tracker", [&](TObjectWriter& each) { visitTracker(each, tracker); });
  writer.object("image", [&](TObjectWriter& each) { writeImage(each, job.preparation); });
  return text.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

TWeldTracker makeWeldTracker(const TWeldJob& job) {
  return job.ownJoint ? TWeldTracker(*job.ownJoint, job.tracker) : TWeldTracker(job.params, job.tracker);
}
