// zelweld compare and zelweld sweep, and the rules behind their figures.
#include "tools/sweep.h"
#include "program.h"
#include "tools/cli_error.h"
#include "tools/seam_run.h"

namespace {

std::vector<bool> goodOf(const std::vector<std::pair<double, std::optional<double>>>& rows) {
  std::vector<tool::TSweepPoint> points;
  for (const auto& [share, jitter] : rows) points.push_back({0.0, share, jitter});
  return tool::goodPoints(points);
}

std::string lineWith(const std::string& text, const std::string& part) {
  for (const std::string& line : linesOf(text)) {
    if (line.find(part) != std::string::npos) return line;
  }
  return "no line with " + part + " in:\n" + text;
}

using TFlags = std::vector<bool>;

}  // namespace

TEST(Jitter, EvenMotionHasNoneAndLossesAndSequencesEndIt) {
  const auto jitterOf = [](const std::vector<std::optional<cv::Point2d>>& seams) {
    tool::TJitter jitter;
    for (const auto& seam : seams) jitter.add(seam);
    return jitter;
  };
  using TPoint = cv::Point2d;
  EXPECT_NEAR(jitterOf({TPoint(0, 7), TPoint(3, 6), TPoint(6, 5)}).medianPx().value(), 0.0, 1e-12);
  EXPECT_DOUBLE_EQ(jitterOf({TPoint(0, 0), TPoint(1, 1), TPoint(2, 0), TPoint(3, 1)}).medianPx().value(), 2.0);
  tool::TJitter broken = jitterOf({TPoint(0, 0), TPoint(0, 9), std::nullopt, TPoint(0, 0), TPoint(0, 9)});
  broken.startSequence();
  broken.add(TPoint(0, 0));
  EXPECT_FALSE(broken.medianPx());
}

TEST(Sweep, RangesMeetTheirEndsAndWrongOnesAreRefused) {
  EXPECT_EQ(tool::parseRange("dPara7=5:20:5").values, (std::vector<double>{5.0, 10.0, 15.0, 20.0}));
  EXPECT_EQ(tool::parseRange("dPara7=-1:1:1.5").values, (std::vector<double>{-1.0, 0.5}));
  EXPECT_EQ(tool::parseRange("dPara3=0:0.3:0.1").values.size(), 4U);  // 0.1 has no exact double
  EXPECT_EQ(tool::parseRange("dPara7=1:1000:1").values.size(), 1000U);
  for (const char* const wrong :
       {"dPara7=1:1001:1", "dPara7=20:5:5", "dPara7=5:5:5", "dPara7=5:20:0", "dPara7=5:20:-5", "dPara7=5:20",
        "dPara7=a:b:c", "dPara7=0:1e300:1e-300", "5:20:5"}) {
    EXPECT_THROW(tool::parseRange(wrong), tool::TCliError) << wrong;
  }
}

TEST(Sweep, GoodValuesKeepShareAndJitterNearTheBest) {
  EXPECT_EQ(goodOf({{1.0, 0.5}, {0.99, 0.6}, {0.985, 0.5}, {1.0, 0.61}, {1.0, std::nullopt}}),
            (TFlags{true, true, false, false, false}));
  // A steady seam that is seldom found sets no standard; below 0.05 px nobody sees a difference.
  EXPECT_EQ(goodOf({{0.2, 0.01}, {1.0, 0.5}}), (TFlags{false, true}));
  EXPECT_EQ(goodOf({{1.0, 0.0}, {1.0, 0.05}, {1.0, 0.06}}), (TFlags{true, true, false}));
  EXPECT_EQ(goodOf({{0.5, std::nullopt}, {1.0, std::nullopt}}), (TFlags{false, true}));  // a joint without a seam
  EXPECT_EQ(goodOf({{0.0, std::nullopt}}), (TFlags{false}));
}

TEST(Sweep, TheFirstOfTheWidestGoodRangesGivesTheSuggestion) {
  const auto good = tool::widestGoodRange({true, false, true, true, true, true, false, true, true, true, true});
  ASSERT_TRUE(good);
  EXPECT_EQ(good->first, 2U);
  EXPECT_EQ(good->last, 5U);
  EXPECT_EQ(good->middle, 3U);
  EXPECT_EQ(tool::widestGoodRange({false, true})->middle, 1U);
  EXPECT_FALSE(tool::widestGoodRange({false, false}));
}

// Simulated gaps are 18 to 60 px wide.
TEST_F(ZelweldTest, CompareTellsWhatOneFileLosesAndWhy) {
  simulate("f", "--type gap --frames 6 --seed 3");
  writeFile(folder / "a.json", R"({"weldType": "gap"})");
  writeFile(folder / "b.json", R"({"weldType": "gap", "dPara8": 100})");
  const std::string out = zelweldOk("compare a.json b.json f").out;
  EXPECT_NE(lineWith(out, "found  ").find("6 (100.0 %)"), std::string::npos) << out;
  EXPECT_NE(lineWith(out, "found  ").find("0 (0.0 %)"), std::string::npos) << out;
  EXPECT_EQ(lineWith(out, "Lost under B"), "Lost under B, found under A: 6 frames");
  EXPECT_EQ(lineWith(out, "  frames 0"), "  frames 0-5");
  EXPECT_EQ(lineWith(out, "Lost under A"), "Lost under A, found under B: 0 frames");
  EXPECT_NE(lineWith(out, "  6 x").find("frame 0: gap"), std::string::npos) << out;
  EXPECT_NE(lineWith(out, "  6 x").find("set by minGapPx (dPara8)"), std::string::npos) << out;

  const std::string same = zelweldOk("compare a.json a.json f --roi 0,0,640,480 --exact").out;
  EXPECT_NE(same.find("seams of A and B: 0.00 px, 6 frames"), std::string::npos) << same;
  EXPECT_EQ(same.find("Reasons"), std::string::npos) << same;
}

TEST_F(ZelweldTest, SweepSuggestsAValueThatFindsTheSeam) {
  simulate("f", "--type gap --frames 4 --seed 3");
  const std::string out = zelweldOk("sweep f --type gap --set dPara4=3 --set dPara8=5:105:10 --out s.html").out;
  EXPECT_EQ(linesOf(out).size(), 1U + 11U + 1U + 2U) << out;
  EXPECT_NE(lineWith(out, " * 5 ").find("#################### 100.0 %"), std::string::npos) << out;
  EXPECT_NE(lineWith(out, "   105 ").find(" 0.0 %"), std::string::npos) << out;
  EXPECT_EQ(lineWith(out, "may go on"), "The good range may go on below the sweep.");
  const std::string page = readFile(folder / "s.html");
  EXPECT_NE(page.find(R"("value":105.0,"foundShare":0.0,"jitterPx":null)"), std::string::npos);
  EXPECT_NE(zelweldOk("sweep f --type gap --set dPara8=100:110:10").out.find("No suggestion"), std::string::npos);
}
