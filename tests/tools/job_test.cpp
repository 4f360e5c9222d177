// Jobs through the program: written, read, changed, compared.
#include "program.h"

#include "zelWeldDetect.h"

namespace {

// A V groove as its user would describe it.
const char* const kOwnJoint = R"({"zelWeldJob": 1, "ownJoint": {"name": "my V", "elements": [
  {"shape": "plate"}, {"shape": "flank", "angleDeg": [10, 88]},
  {"shape": "flank", "angleDeg": [-88, -10]}, {"shape": "plate"}],
  "points": [{"feature": "root", "place": "start", "element": 2}]}})";

}  // namespace

// A job carries what was tuned to where no option is typed; options win over it.
TEST_F(ZelweldTest, JobsStandForTheOptionsTheyWereWrittenWith) {
  simulate("f", "--type gap --frames 3 --seed 3");
  const std::string options =
      "--type gap --position left --set fitScalePx=3 --rotate 180 --roi 3,2,630,470 --hold 0 ";
  writeFile(folder / "job.json", zelweldOk("params --format job " + options).out);
  const auto typed = track("f " + options);
  const auto carried = track("f --job job.json");
  const auto placeOf = [](const nlohmann::json& record) {
    return std::vector<nlohmann::json>{record["found"], record["x"], record["y"], record["storedX"],
                                       record["storedY"]};
  };
  ASSERT_EQ(carried.size(), 3U);
  for (std::size_t i = 0; i < carried.size(); ++i) EXPECT_EQ(placeOf(carried[i]), placeOf(typed[i])) << i;
  EXPECT_NE(carried[0]["x"], track("f --job job.json --position right")[0]["x"]);
  EXPECT_NE(carried[0]["x"], track("f --job job.json --roi 0,0,640,480")[0]["x"]);
  const std::string again = zelweldOk("params --job job.json --format job --max-jump inf").out;
  const TJobReading reading = parseWeldJob(again);
  ASSERT_EQ(reading.problem, "");
  EXPECT_EQ(reading.job.params.dPara4, 3.0);
  EXPECT_EQ(reading.job.tracker.holdFrames, 0);
  EXPECT_EQ(reading.job.tracker.maxJumpPx, TJointRange::kAny);
}

TEST_F(ZelweldTest, OwnJointsAreTrackedReportedAndCompared) {
  simulate("v", "--type v --frames 3 --seed 6");
  writeFile(folder / "own.json", kOwnJoint);
  const auto own = track("v --job own.json");
  const auto known = track("v --params v/params.json");
  ASSERT_EQ(own.size(), 3U);
  for (std::size_t i = 0; i < own.size(); ++i) {
    ASSERT_EQ(own[i]["state"], "found") << i;
    EXPECT_NEAR(own[i]["x"].get<double>(), known[i]["x"].get<double>(), 2.0) << i;
  }
  zelweldOk("report v --job own.json --out r.html");
  EXPECT_NE(readFile(folder / "r.html").find(R"("joint":"my V")"), std::string::npos);
  EXPECT_NE(zelweldOk("compare own.json v/params.json v").out.find("3 frames with a seam in both"),
            std::string::npos);
  expectRefused(2, {{"track v --job own.json --set minGapPx=3", "change no joint of one's own"},
                    {"sweep v --job own.json --set minGapPx=3:9:3", "reads no parameter 'minGapPx'"}});
}

// Sides that cut and turn the frames in ways of their own are compared in the stored image.
TEST_F(ZelweldTest, ComparePageShowsFramesThatDifferAndSidesMayBePreparedApart) {
  simulate("f", "--type gap --frames 4 --seed 3");
  writeFile(folder / "a.json", R"({"weldType": "gap"})");
  const std::string options = " --type gap --rotate 180 --roi 0,0,600,480 --format job";
  writeFile(folder / "b.json", zelweldOk("params" + options).out);
  const std::string out = zelweldOk("compare a.json b.json f").out;
  const std::size_t at = out.find("seams of A and B: ");
  ASSERT_NE(at, std::string::npos) << out;
  EXPECT_LT(std::stod(out.substr(at + 18)), 1.0) << out;

  zelweldOk("compare a.json f --set minGapPx=100 --out c.html");
  const std::string html = readFile(folder / "c.html");
  const std::string open = R"(id="report-data">)";
  const std::size_t begin = html.find(open) + open.size();
  const auto data =
      nlohmann::json::parse(html.substr(begin, html.find("</script>", begin) - begin), nullptr, false);
  ASSERT_FALSE(data.is_discarded());
  EXPECT_EQ(data["b"]["name"], "a.json with minGapPx=100");
  EXPECT_EQ(data["onlyA"], 4);
  ASSERT_EQ(data["differing"].size(), 4U);
  for (const auto& frame : data["differing"]) {
    for (const char* const side : {"a", "b"})
      EXPECT_EQ(frame[side]["picture"].get<std::string>().rfind("data:image/jpeg;base64,", 0), 0U);
    EXPECT_EQ(frame["a"]["state"], "found");
    EXPECT_NE(frame["b"]["sentence"].get<std::string>().find("minGapPx (dPara8)"), std::string::npos);
  }
}
