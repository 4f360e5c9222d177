// zelweld compare and zelweld sweep, and the rules behind their figures.
#include "tools/sweep.h"
#include "program.h"
#include "tools/cli_error.h"
#include "tools/seam_run.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <regex>

namespace {

std::vector<bool> goodOf(const std::vector<std::pair<double, std::optional<double>>>& rows) {
  std::vector<tool::TSweepPoint> points;
  for (const auto& [share, jitter] : rows) points.push_back({0.0, share, jitter, 0.9});
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

TEST(Sweep, NothingIsSuggestedThatFindsTooLittleOrCannotBeRight) {
  struct TRow {
    const char* name;
    std::vector<tool::TSweepPoint> points;
    std::string objection;  // part of it; empty: none
  };
  const tool::TSweepPoint good{1.0, 1.0, 0.2, 0.9};
  const auto with = [&](auto change) {
    tool::TSweepPoint point = good;
    change(point);
    return point;
  };
  const auto few = with([](auto& p) { p.foundShare = 0.31; });
  const auto wild = with([](auto& p) { p.jitterPx = 39.0; });
  const auto loose = with([](auto& p) { p.canFail = false; });
  const auto atEnd = with([](auto& p) { p.stripeEndShare = 0.9; });
  const auto apart = with([](auto& p) { p.apartPx = 80.0; });
  const auto none = with([](auto& p) { p.foundShare = 0.0; });
  const auto wrong = with([](auto& p) { p.truth = tool::TTruthFigures{12, 1, {}}; });
  const auto right = with([](auto& p) { p.truth = tool::TTruthFigures{12, 0, {}}; });
  const TRow rows[] = {{"good", {none, good, good, none}, ""},
                       {"few", {none, few, few, none}, "less than 90 %"},
                       {"wild", {none, wild, wild, none}, "jumps by 39.0 px"},
                       {"edge", {good, none, none}, "move the range"},
                       {"loose", {loose, none}, "can no longer fail"},
                       {"loose beside good", {loose, good, good, none}, ""},
                       {"end of the stripe", {atEnd, atEnd, none}, "stripe ends"},
                       {"neighbours", {none, good, apart, none}, "80.0 px apart"},
                       {"nothing", {none, none}, "no value found a seam"},
                       {"wrong", {wrong, wrong, none}, "1 of 12 labelled frames wrong"},
                       {"wrong beside right", {wrong, right, right, none}, ""}};
  for (const TRow& row : rows) {
    SCOPED_TRACE(row.name);
    const auto range = tool::widestGoodRange(tool::goodPoints(row.points));
    const std::string objection = tool::objectionTo(row.points, range);
    EXPECT_EQ(objection.empty(), row.objection.empty()) << objection;
    EXPECT_NE(objection.find(row.objection), std::string::npos) << objection;
  }
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
  EXPECT_TRUE(std::regex_match(lineWith(out, "gapPx "), std::regex("gapPx +[0-9.]+ +-"))) << out;
  EXPECT_NE(lineWith(out, "  6 x").find("frame 0: gap"), std::string::npos) << out;
  EXPECT_NE(lineWith(out, "  6 x").find("set by minGapPx (dPara8)"), std::string::npos) << out;

  const std::string same = zelweldOk("compare a.json a.json f --roi 0,0,640,480 --exact").out;
  EXPECT_NE(same.find("seams of A and B: 0.00 px, 6 frames"), std::string::npos) << same;
  EXPECT_EQ(same.find("Reasons"), std::string::npos) << same;
}

// The labels that simulate writes, then the same moved by 20 px.
TEST_F(ZelweldTest, TruthTellsWrongSeamsFromRightOnes) {
  simulate("f", "--type gap --frames 6 --seed 3");
  const std::string sweep = "sweep f --type gap --set minGapPx=2:100:7 --truth ";
  EXPECT_NE(zelweldOk(sweep + "f/truth.csv").out.find("Suggestion: minGapPx="), std::string::npos);
  std::string moved = "file,x,y,point,source,tol_px\n";
  for (int n = 0; n < 6; ++n) moved += cv::format("frame_%04d.png,20,\"20\",seam,\"by hand, twice\",2.5\n", n);
  writeFile(folder / "moved.csv", moved);
  const std::string out = zelweldOk(sweep + "moved.csv").out;
  EXPECT_NE(out.find("6 of 6 labelled frames wrong"), std::string::npos) << out;
  const std::string tracked = zelweldOk("track f --type gap --truth moved.csv").err;
  EXPECT_NE(tracked.find("wrong by the labels 6 of 6, error "), std::string::npos) << tracked;
  writeFile(folder / "two.csv", "file,x,y,point\na.png,1,2,root\na.png,1,2,toe\n");
  expectRefused(2, {{sweep + "two.csv", "choose one with --point: root, toe"},
                    {sweep + "two.csv --point x", "use root, toe"}});
  writeFile(folder / "bad.csv", "file,x,y\na.png,1,z\n");
  expectRefused(3, {{sweep + "bad.csv", "line 2: y 'z' is no number"},
                    {sweep + "absent.csv", "absent.csv: cannot be read"}});
}

// An unbroken stripe has no gap, whatever the least one is; one stripe turned upright says so.
TEST_F(ZelweldTest, SentencesSayWhatWouldBeEnough) {
  simulate("p", "--type plain --frames 3 --seed 2");
  EXPECT_NE(zelweldOk("sweep p --type gap --set minGapPx=2:12:1").out.find("No suggestion: no value"),
            std::string::npos);
  EXPECT_EQ(zelweld("sweep p --type gap --set minGapPx=1:12:1").exitCode, 2);
  const auto adviceOf = [&](const std::string& arguments) {
    return track("--explain " + arguments).front()["trace"]["advice"].get<std::string>();
  };
  EXPECT_NE(adviceOf("p --type gap").find("even so score of the darkest break"), std::string::npos);
  simulate("f", "--type lap --level clean --frames 1 --seed 4");
  const std::string two = adviceOf("f --type lap --set minStepPx=400 --set minPiecePx=600");
  EXPECT_TRUE(std::regex_match(
      two, std::regex("needs minStepPx \\(dPara7\\) [0-9]+ or less and minPiecePx \\(dPara6\\) [0-9]+ or less")))
      << two;
  cv::Mat turned;
  cv::rotate(cv::imread((folder / "f/frame_0000.png").string()), turned, cv::ROTATE_90_CLOCKWISE);
  cv::imwrite((folder / "turned.png").string(), turned);
  EXPECT_EQ(adviceOf("turned.png --type lap"), "the stripe runs upright: --rotate 90");
  simulate("v", "--type v --level clean --frames 1 --seed 6");
  EXPECT_NE(adviceOf("v --type gap").find("looks like a V groove: --type vGroove"), std::string::npos);
  cv::Mat roof(480, 640, CV_8U, cv::Scalar(10));
  cv::polylines(roof, std::vector<cv::Point>{{0, 300}, {300, 150}, {639, 310}}, false, cv::Scalar(200), 9);
  cv::imwrite((folder / "roof.png").string(), roof);
  EXPECT_NE(adviceOf("roof.png --type corner").find("--preset roof"), std::string::npos);
  EXPECT_TRUE(track("roof.png --type corner --preset roof").front()["found"]);
  expectRefused(2, {{"track p --type gap --preset roof", "only a corner has presets"},
                    {"track p --type corner --preset dome", "use valley, roof"},
                    {"track p --type gap --position upper", "knows no position"},
                    {"track p --type gap --set minStepPx=3", "reads no parameter 'minStepPx'"}});
}

// Every other step is lower: the seam moves evenly, the mismatch does not.
TEST_F(ZelweldTest, AMeasureCanBeWhatIsToBeSteady) {
  std::filesystem::create_directory(folder / "f");
  for (int n = 0; n < 8; ++n) {
    cv::Mat image(200, 400, CV_8U, cv::Scalar(10));
    image(cv::Rect(0, 96, 180, 8)).setTo(200);
    image(cv::Rect(220, n % 2 == 0 ? 98 : 96, 180, 8)).setTo(200);
    cv::imwrite((folder / cv::format("f/%d.png", n)).string(), image);
  }
  const std::string sweep = "sweep f --type gap --set minGapPx=5:15:5";
  const auto jitterOf = [&](const std::string& out) {
    std::smatch found;
    const std::string line = lineWith(out, " * 10 ");
    return std::regex_search(line, found, std::regex("100.0 % +([0-9.]+)")) ? std::stod(found[1]) : -1.0;
  };
  EXPECT_NEAR(jitterOf(zelweldOk(sweep + " --objective mismatchPx").out), 4.0, 0.5);
  EXPECT_NEAR(jitterOf(zelweldOk(sweep + " --objective gapPx").out), 0.0, 0.5);
}

TEST_F(ZelweldTest, SweepSuggestsAValueThatFindsTheSeam) {
  simulate("f", "--type gap --frames 4 --seed 3");
  const std::string out = zelweldOk("sweep f --type gap --set dPara4=3 --set dPara8=5:105:10 --out s.html").out;
  EXPECT_EQ(linesOf(out).size(), 1U + 11U + 1U + 2U) << out;
  EXPECT_NE(lineWith(out, " * 5 ").find("#################### 100.0 %"), std::string::npos) << out;
  EXPECT_NE(lineWith(out, "   105 ").find(" 0.0 %"), std::string::npos) << out;
  EXPECT_EQ(lineWith(out, "may go on"), "The good range may go on below the sweep.");
  expectRefused(
      2, {{"sweep f --type gap --set dPara8=5:15:5 --objective gap", "measures no 'gap': use confidence, gapPx"}});
  const std::string page = readFile(folder / "s.html");
  EXPECT_NE(page.find(R"("value":105.0,"foundShare":0.0,"jitterPx":null)"), std::string::npos);
  EXPECT_NE(zelweldOk("sweep f --type gap --set dPara8=100:110:10").out.find("No suggestion"), std::string::npos);
}
