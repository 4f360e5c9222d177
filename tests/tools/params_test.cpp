// The parameter table, parameter files, and simulated sequences.
#include "program.h"
#include "tools/cli_error.h"
#include "tools/names.h"
#include "tools/param_json.h"
#include "tools/param_table.h"

#include <cstdlib>
#include <map>

namespace fs = std::filesystem;

namespace {

const std::vector<TWeldType> kTypes = tool::detectorTypes();

// Names and bytes of the page and its drawings in a docs folder.
std::map<std::string, std::string> pageFiles(const fs::path& docs) {
  std::map<std::string, std::string> files{{"parameters.md", readFile(docs / "parameters.md")}};
  for (const auto& entry : fs::directory_iterator(docs / "images/parameters")) {
    files[entry.path().filename().string()] = readFile(entry.path());
  }
  return files;
}

}  // namespace

TEST(ParamTable, DefaultsLieInsideTheLimitsAndBeyondThemIsRefused) {
  for (const TWeldType type : kTypes) {
    ASSERT_FALSE(tool::paramsOf(type).empty()) << tool::nameOf(type);
    for (const tool::TParamSpec& spec : tool::paramsOf(type)) {
      SCOPED_TRACE(tool::nameOf(type) + " " + spec.name);
      TWeldParams params;
      const auto standard = tool::getParam(params, spec);
      tool::setParam(params, spec, standard);
      EXPECT_EQ(tool::getParam(params, spec), standard);
      if (!standard.is_boolean()) {
        tool::setParam(params, spec, spec.limits.min + 1.0);
        EXPECT_EQ(tool::getParam(params, spec), spec.limits.min + 1.0);
        EXPECT_THROW(tool::setParam(params, spec, spec.limits.max + 1.0), tool::TCliError);
        EXPECT_THROW(tool::setParam(params, spec, spec.limits.min - (spec.limits.isMinExcluded ? 0.0 : 1.0)),
                     tool::TCliError);
      }
    }
  }
}

// Each name must lead to a field of its own: all parameters of a joint changed together come back changed.
TEST_F(ZelweldTest, ParameterFilesComeBackWithEveryValue) {
  for (const TWeldType type : kTypes) {
    SCOPED_TRACE(tool::nameOf(type));
    TWeldParams params;
    initWeldParameters(type, params, TWeldPosType::upper);
    double step = 0.0;
    for (const tool::TParamSpec& spec : tool::paramsOf(type)) {
      const bool isSwitch = tool::getParam(params, spec).is_boolean();
      step += isSwitch ? 0.0 : 1.0;
      const double share = spec.limits.min + step / 32.0;
      const double value = spec.limits.max > 50.0 ? spec.limits.min + step : share;
      tool::setParam(params, spec, isSwitch ? nlohmann::ordered_json(true) : nlohmann::ordered_json(value));
    }
    const auto written = tool::paramsToJson(params);
    writeFile(folder / "p.json", written.dump());
    const TWeldParams read = tool::loadParams({(folder / "p.json").string(), "", "", {}});
    EXPECT_EQ(tool::paramsToJson(read), written);
    EXPECT_TRUE(read.isInit);
    EXPECT_EQ(read.weldType, type);
    EXPECT_EQ(read.weldPosType, TWeldPosType::upper);
  }
}

TEST_F(ZelweldTest, PrintedJsonIsAcceptedByTrackForEveryJoint) {
  simulate("f", "--type gap --frames 1");
  for (const TWeldType type : kTypes) {
    const std::string name = tool::nameOf(type);
    const TRun printed = zelweldOk("params --type " + name + " --position left --format json");
    const auto record = nlohmann::json::parse(printed.out);
    EXPECT_EQ(record["weldType"], name);
    EXPECT_EQ(record["weldPosType"], "left");
    writeFile(folder / "p.json", printed.out);
    zelweldOk("track f --params p.json");
    const std::string table = zelweldOk("params --type " + name).out;
    for (const tool::TParamSpec& spec : tool::paramsOf(type)) {
      EXPECT_NE(table.find(spec.name), std::string::npos) << spec.name;
    }
  }
}

TEST_F(ZelweldTest, OptionsWinOverTheFileAndSetOverBoth) {
  writeFile(folder / "p.json", R"({"weldType": "gap", "weldPosType": "left", "dPara8": 12})");
  const std::string file = (folder / "p.json").string();
  EXPECT_EQ(tool::loadParams({file, "", "", {}}).dPara8, 12.0);
  const TWeldParams changed = tool::loadParams({file, "butt-gap", "2", {"dPara8=15", "angleRange4.min=-5.5"}});
  EXPECT_EQ(changed.weldPosType, TWeldPosType::right);
  EXPECT_EQ(changed.dPara8, 15.0);
  EXPECT_EQ(changed.angleRange4.min, -5.5);
  EXPECT_EQ(changed.angleRange4.max, 45.0);
  EXPECT_THROW(tool::loadParams({file, "corner", "", {}}), tool::TCliError);  // corner does not read dPara8
}

TEST_F(ZelweldTest, SimulationRepeatsItselfAndSaysWhatIsTrue) {
  simulate("a", "--type corner --level harsh --frames 2 --seed 4 --jitter 2");
  simulate("b", "--type corner --level harsh --frames 2 --seed 4 --jitter 2");
  simulate("c", "--type corner --level harsh --frames 2 --seed 5 --jitter 2");
  for (const std::string name : {"frame_0000.png", "frame_0001.png", "truth.csv", "params.json"}) {
    EXPECT_EQ(readFile(folder / "a" / name), readFile(folder / "b" / name)) << name;
  }
  EXPECT_NE(readFile(folder / "a/frame_0000.png"), readFile(folder / "c/frame_0000.png"));
  EXPECT_NE(readFile(folder / "a/frame_0000.png"), readFile(folder / "a/frame_0001.png"));
  EXPECT_EQ(linesOf(readFile(folder / "a/truth.csv")).size(), 3U);
  EXPECT_EQ(nlohmann::json::parse(readFile(folder / "a/params.json"))["weldType"], "corner");

  simulate("blank", "--type blank --frames 1");
  EXPECT_EQ(linesOf(readFile(folder / "blank/truth.csv")).back().substr(0, 19), "frame_0000.png,0,,,");
}

TEST_F(ZelweldTest, TheCommittedParameterPageIsWhatTheTableGives) {
  ASSERT_EQ(std::system((ZELWELD_PARAMETER_PAGE " '" + folder.string() + "'").c_str()), 0);
  const auto committed = pageFiles(ZELWELD_DOCS);
  const auto fresh = pageFiles(folder);
  for (const auto& [name, bytes] : fresh) {
    EXPECT_TRUE(committed.count(name) == 1 && committed.at(name) == bytes) << name << " differs: run make docs";
  }
  EXPECT_EQ(committed.size(), fresh.size()) << "a drawing is left over in docs/images/parameters";
  for (const TWeldType type : kTypes) {
    for (const tool::TParamSpec& spec : tool::paramsOf(type)) {
      EXPECT_FALSE(spec.tooLow.empty() || spec.tooHigh.empty()) << tool::nameOf(type) << " " << spec.name;
    }
  }
}
