// The parameter table, parameter files, and simulated sequences.
#include "program.h"
#include "scenes/joints.h"
#include "tools/cli_error.h"
#include "tools/param_json.h"
#include "tools/parameter.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <map>

namespace fs = std::filesystem;

namespace {

// Names and bytes of the page and its drawings in a docs folder.
std::map<std::string, std::string> pageFiles(const fs::path& docs) {
  std::map<std::string, std::string> files{{"parameters.md", readFile(docs / "parameters.md")}};
  for (const auto& entry : fs::directory_iterator(docs / "images/parameters")) {
    files[entry.path().filename().string()] = readFile(entry.path());
  }
  return files;
}

}  // namespace

TEST(Parameter, DefaultsLieInsideTheLimitsAndBeyondThemIsRefused) {
  for (const TWeldJoint& joint : weldJoints()) {
    for (const TWeldParameter& parameter : joint.parameters) {
      SCOPED_TRACE(std::string(joint.name) + " " + parameter.name);
      TWeldParams params;
      initWeldParameters(joint.type, params, TWeldPosType::centre);
      tool::setValue(params, parameter, tool::valueOf(params, parameter));
      if (tool::isFlag(parameter)) continue;
      const TParameterLimits& limits = parameter.limits;
      tool::setValue(params, parameter, limits.min + 1.0);
      EXPECT_EQ(tool::valueOf(params, parameter), limits.min + 1.0);
      for (const double wrong : {limits.max + 1.0, limits.min - (limits.isMinExcluded ? 0.0 : 1.0)}) {
        EXPECT_THROW(tool::setValue(params, parameter, wrong), tool::TCliError) << wrong;
      }
    }
  }
}

// Each name must lead to a field of its own: all parameters of a joint changed together come back changed, from a
// file with the names, as it is printed, and from one with the fields.
TEST_F(ZelweldTest, ParameterFilesComeBackWithEveryValueUnderEitherName) {
  for (const auto& [drawn, type] : scenes::detectedJoints()) {
    const TWeldJoint& joint = *findWeldJoint(type);
    SCOPED_TRACE(joint.name);
    const std::string print =
        "params --type " + std::string(joint.name) + " --position " + weldPosText(joint.positions.back());
    auto named = nlohmann::ordered_json::parse(zelweldOk(print + " --format json").out);
    const std::string table = zelweldOk(print).out;
    EXPECT_EQ(named.size(), joint.parameters.size() + 2);
    nlohmann::ordered_json fields = {{"weldType", joint.shortName}, {"weldPosType", joint.positions.back()}};
    TWeldParams params;
    double step = 0.0;
    for (const TWeldParameter& parameter : joint.parameters) {
      EXPECT_NE(table.find(weldParameterLabel(parameter)), std::string::npos) << parameter.name;
      step += 1.0;
      parameter.value.set(params, parameter.limits.min + (parameter.limits.max > 50.0 ? step : step / 32.0));
      named[parameter.name] = fields[parameter.field] = tool::valueOf(params, parameter);
    }
    for (const auto& file : {named, fields}) {
      writeFile(folder / "p.json", file.dump());
      EXPECT_EQ(tool::paramsToJson(tool::loadJob({(folder / "p.json").string(), "", "", {}}).params), named);
    }
  }
}

TEST_F(ZelweldTest, OptionsWinOverTheFileAndSetOverBoth) {
  writeFile(folder / "p.json", R"({"weldType": "gap", "weldPosType": "left", "dPara8": 12})");
  const std::string file = (folder / "p.json").string();
  EXPECT_EQ(tool::loadJob({file, "", "", {}}).params.dPara8, 12.0);
  const TWeldParams changed =
      tool::loadJob(
          {file, "butt-gap", "2", {"dPara8=15", "minGapPx=16", "angleRange4.min=-5.5", "stripeAngleDeg.max=30"}})
          .params;
  EXPECT_EQ(changed.weldPosType, TWeldPosType::right);
  EXPECT_EQ(changed.dPara8, 16.0);
  EXPECT_EQ(changed.angleRange4.min, -5.5);
  EXPECT_EQ(changed.angleRange4.max, 30.0);
  EXPECT_THROW(tool::loadJob({file, "corner", "0", {}}), tool::TCliError);  // corner does not read dPara8
}

TEST_F(ZelweldTest, SimulationRepeatsItselfAndSaysWhatIsTrue) {
  for (const std::string seed : {"4", "5"}) {
    simulate("a" + seed, "--type corner --level harsh --frames 2 --jitter 2 --seed " + seed);
  }
  simulate("b4", "--type corner --level harsh --frames 2 --jitter 2 --seed 4");
  const auto read = [&](const std::string& file) { return readFile(folder / file); };
  for (const std::string name : {"/frame_0000.png", "/frame_0001.png", "/truth.csv", "/params.json"}) {
    EXPECT_EQ(read("a4" + name), read("b4" + name)) << name;
  }
  EXPECT_NE(read("a4/frame_0000.png"), read("a5/frame_0000.png"));
  EXPECT_NE(read("a4/frame_0000.png"), read("a4/frame_0001.png"));
  EXPECT_EQ(linesOf(read("a4/truth.csv")).size(), 3U);
  simulate("blank", "--type blank --frames 1");
  EXPECT_EQ(linesOf(read("blank/truth.csv")).back().substr(0, 19), "frame_0000.png,0,,,");
}

TEST_F(ZelweldTest, TheCommittedParameterPageIsWhatTheTableGives) {
  ASSERT_EQ(std::system((ZELWELD_PARAMETER_PAGE " '" + folder.string() + "'").c_str()), 0);
  const auto committed = pageFiles(ZELWELD_DOCS);
  const auto fresh = pageFiles(folder);
  for (const auto& [name, bytes] : fresh) {
    EXPECT_TRUE(committed.count(name) == 1 && committed.at(name) == bytes) << name << " differs: run make docs";
  }
  EXPECT_EQ(committed.size(), fresh.size()) << "a drawing is left over in docs/images/parameters";
}
