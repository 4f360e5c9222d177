// zelweld advise: from a lost frame to the setting that finds it, and what is not advised.
#include "tools/advise.h"
#include "program.h"

#include <cstdlib>
#include <regex>

namespace {

using TSeams = std::vector<std::optional<cv::Point2d>>;

tool::TTrial trialOf(const TSeams& seams) {
  return {{TGapSettings().params(), {}, 0, {"--set a=1"}, false}, {}, {}, seams, {}, {}};
}

}  // namespace

TEST_F(ZelweldTest, FramesOutsideTheRangeAreLeftUnread) {
  simulate("f", "--type gap --frames 4");
  writeFile(folder / "f/frame_0000.png", "no image");
  EXPECT_EQ(fieldOf<int>(track("f --type gap --frames 1:2"), "frame"), (std::vector<int>{1, 2}));
  expectRefused(3, {{"track f --type gap --frames 9:12", "begins with frame 9, and the inputs hold 4"}});
  expectRefused(2, {{"track f --type gap --frames 3:1", "'3:1' is no range"},
                    {"track f --type gap --frames x", "is no range"}});
}

TEST(Advise, NothingIsAdvisedThatLosesMovesOrFindsLittle) {
  const std::optional<cv::Point2d> none;
  const auto at = [](double x) { return std::make_optional(cv::Point2d(x, 0.0)); };
  const TSeams given = {at(1), at(2), at(3), none, none};
  struct TRow {
    const char* name;
    TSeams seams;
    std::string objection;
  };
  const TRow rows[] = {{"all", {at(1), at(2), at(3), at(4), at(5)}, ""},
                       {"one in two", {at(1), at(2), at(3), at(4), none}, ""},
                       {"nothing", given, "finds 0 of 2 lost frames"},
                       {"loses", {at(1), none, at(3), at(4), at(5)}, "loses 1 frames"},
                       {"moves", {at(4), at(5), at(6), at(4), at(5)}, "moves good seams by 3.0 px"},
                       {"moves a few", {at(1), at(2), at(30), at(4), at(5)}, "moves good seams by 0.0 px"}};
  for (const TRow& row : rows) {
    const std::string objection = changeBetween(trialOf(given), trialOf(row.seams)).objection;
    EXPECT_EQ(objection.empty(), row.objection.empty()) << row.name << ": " << objection;
    EXPECT_EQ(objection.rfind(row.objection, 0), 0U) << row.name << ": " << objection;
  }
  tool::TTrial wrong = trialOf({at(1), at(2), at(3), at(4), at(5)});
  wrong.truth = {5, 1, {}};
  EXPECT_EQ(changeBetween(trialOf(given), wrong).objection, "gives 1 wrong seams, by the labels");
  tool::TTrial loose = trialOf({at(1), at(2), at(3), at(4), at(5)});
  loose.setting.isLoosest = true;
  EXPECT_EQ(changeBetween(trialOf(given), loose).objection, "lets a test pass everything");
}

TEST_F(ZelweldTest, NoSettingIsAdvisedForAStripeWithoutAJoint) {
  simulate("p", "--type plain --frames 12 --level noisy --seed 2");
  const std::string out = zelweldOk("advise p --type gap").out;
  EXPECT_NE(out.find("No setting does"), std::string::npos) << out;
  simulate("f", "--type gap --frames 3");
  EXPECT_NE(zelweldOk("advise f --type gap").out.find("nothing to advise"), std::string::npos);
}

TEST_F(ZelweldTest, LongerJumpsAreAdvisedForASeamThatMovesFast) {
  simulate("j", "--type gap --frames 6 --drift 45,0 --seed 3");
  EXPECT_NE(zelweldOk("advise j --type gap").out.find("Advice: --max-jump 80\n"), std::string::npos);
}

// Camera frames of an upright stripe over a tight gap, with labels.
TEST_F(ZelweldTest, NothingWrongIsSuggestedOnRealFrames) {
  const char* const root = std::getenv("ZELWELD_FRAMES");
  const auto run = std::filesystem::path(root == nullptr ? DEFAULT_FRAMES : root) / "nghia-butt/run_c";
  if (!std::filesystem::exists(run / "labels.csv")) GTEST_SKIP() << "no labelled frames in " << run;
  const std::string truth = " --truth " + (run / "labels.csv").string();
  const std::string region = " --rotate 90 --roi 600,300,350,700";
  std::smatch found;
  const std::string sweep = zelweldOk("sweep " + run.string() + " --type gap --set minGapPx=2:12:1" + region).out;
  std::string change;
  if (std::regex_search(sweep, found, std::regex("Suggestion: (minGapPx=[0-9.]+)")))
    change = " --set " + found[1].str();
  const std::string advice = zelweldOk("advise " + run.string() + " --type gap").out;
  std::vector<std::string> settings = {change.empty() ? "" : region + change};
  if (std::regex_search(advice, found, std::regex("Advice: (.*)\n"))) settings.push_back(" " + found[1].str());
  int judged = 0;
  for (const std::string& setting : settings) {
    if (setting.empty()) continue;
    // A sweep over a parameter that is not at stake tells how many are wrong.
    const std::string out =
        zelweldOk("sweep " + run.string() + " --type gap --set fitScalePx=2:2.1:0.1" + setting + truth).out;
    EXPECT_NE(out.find(" 0 of 12 "), std::string::npos) << setting << "\n" << out;
    ++judged;
  }
  std::cout << judged << " suggestions judged\n";
}
