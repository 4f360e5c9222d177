// zelweld report and track --explain: what the page and the records say about frames that are not found.
#include "program.h"

#include "tools/picture_code.h"
#include "tools/picture_shelf.h"

#include <opencv2/imgcodecs.hpp>

namespace fs = std::filesystem;

namespace {

constexpr int kFrames = 8;
constexpr int kDarkFrame = 4;

// The data that the page carries, read as a browser does: up to the first end tag.
nlohmann::json dataOf(const fs::path& page) {
  const std::string html = readFile(page);
  const std::string open = R"(<script type="application/json" id="report-data">)";
  const std::size_t begin = html.find(open) + open.size();
  return nlohmann::json::parse(html.substr(begin, html.find("</script>", begin) - begin), nullptr, false);
}

}  // namespace

// A gap that is drawn in all frames but one.
class ReportTest : public ZelweldTest {
protected:
  void SetUp() override {
    ZelweldTest::SetUp();
    simulate("f", "--type gap --frames " + std::to_string(kFrames));
    cv::imwrite((folder / ("f/frame_000" + std::to_string(kDarkFrame) + ".png")).string(),
                cv::Mat::zeros(480, 640, CV_8U));
  }
};

TEST_F(ReportTest, PageHoldsEveryFrameWithReasonTestsAndPicture) {
  zelweldOk("report f --type gap --set dPara8=12 --exact --out r.html");
  const auto data = dataOf(folder / "r.html");
  ASSERT_FALSE(data.is_discarded());
  ASSERT_EQ(data["frames"].size(), kFrames);
  EXPECT_EQ(data["summary"]["found"], kFrames - 1);
  const auto& dark = data["frames"][kDarkFrame];
  EXPECT_EQ(dark["state"], "lost");
  EXPECT_EQ(dark["x"], nullptr);
  EXPECT_NE(dark["reason"], "found");
  EXPECT_NE(dark["sentence"], "");
  for (int n = 0; n < kFrames; ++n) {
    const auto& detail = data["details"][std::to_string(n)];
    EXPECT_EQ(detail["picture"].get<std::string>().rfind("data:image/jpeg;base64,", 0), 0U) << n;
    EXPECT_GT(detail["trace"]["attempts"][0]["checks"].size(), 0U) << n;
  }
  const auto& parameters = data["parameters"];
  const auto changed = std::find_if(parameters.begin(), parameters.end(),
                                    [](const nlohmann::json& row) { return row["value"] != row["default"]; });
  ASSERT_NE(changed, parameters.end());
  EXPECT_EQ((*changed)["name"], "minGapPx");
  EXPECT_EQ((*changed)["field"], "dPara8");
}

TEST_F(ReportTest, FileNamesCannotEndTheDataOfThePage) {
  fs::create_directories(folder / "<");
  fs::copy(folder / "f/frame_0000.png", folder / "<" / "script><b>\"&'.png");
  zelweldOk("report '<' --type gap --out r.html");
  const auto data = dataOf(folder / "r.html");
  ASSERT_FALSE(data.is_discarded());
  EXPECT_EQ(data["frames"][0]["file"], "</script><b>\"&'.png");
}

TEST_F(ReportTest, UnreadableFramesAreReportedWithoutAPicture) {
  writeFile(folder / "f/frame_0002.png", "not an image");
  EXPECT_EQ(zelweld("report f --type gap --out r.html").exitCode, 3);
  const auto data = dataOf(folder / "r.html");
  ASSERT_EQ(data["frames"].size(), kFrames);
  EXPECT_NE(data["frames"][2]["sentence"].get<std::string>().find("no whole image"), std::string::npos);
  EXPECT_FALSE(data["details"].contains("2"));
}

TEST_F(ReportTest, ExplainAddsReasonsToEveryFormat) {
  const std::string track = "track f --type gap --exact --explain --format ";
  const auto records = recordsOf(zelweldOk(track + "jsonl").out);
  ASSERT_EQ(records.size(), kFrames);
  const std::string sentence = records[kDarkFrame]["trace"]["sentence"];
  EXPECT_FALSE(sentence.empty());
  EXPECT_EQ(records[kDarkFrame]["reason"], records[kDarkFrame]["trace"]["reason"]);
  EXPECT_EQ(records[0]["reason"], "found");
  const auto ends = [](const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
  };
  const auto table = linesOf(zelweldOk(track + "table").out);
  ASSERT_EQ(table.size(), kFrames + 1);
  const std::string advice = records[kDarkFrame]["trace"]["advice"];
  EXPECT_TRUE(ends(table[kDarkFrame + 1], "  " + sentence + "; " + advice)) << table[kDarkFrame + 1];
  EXPECT_FALSE(ends(table[1], "found")) << table[1];
  const auto csv = linesOf(zelweldOk(track + "csv").out);
  ASSERT_EQ(csv.size(), kFrames + 1);
  EXPECT_TRUE(ends(csv[0], ",rightEdge.sigmaPx,tests,reason,sentence,advice")) << csv[0];
  EXPECT_NE(csv[1].find("gap:"), std::string::npos) << csv[1];
  const auto& tests = records[0]["tests"];
  const auto gap =
      std::find_if(tests.begin(), tests.end(), [](const auto& test) { return test["name"] == "gap"; });
  ASSERT_NE(gap, tests.end());
  EXPECT_EQ((*gap)["margin"], (*gap)["measured"].get<double>() - (*gap)["limit"].get<double>());
  EXPECT_NE(csv[kDarkFrame + 1].find(sentence.substr(0, sentence.find(','))), std::string::npos);
}

// A corner, since it has values beside the point.
TEST_F(ReportTest, HeldFramesRepeatTheSeamAndNothingElse) {
  simulate("c", "--type corner --frames 3");
  fs::copy(folder / "f/frame_0004.png", folder / "c/frame_0001.png", fs::copy_options::overwrite_existing);
  const auto records = recordsOf(zelweldOk("track c --type corner --explain --points --format jsonl").out);
  const auto& before = records[0];
  const auto& held = records[1];
  EXPECT_EQ(before["state"], "found");
  EXPECT_NE(before["trackVal"], 0.0);
  EXPECT_EQ(held["state"], "held");
  EXPECT_EQ(held["found"], false);
  EXPECT_NE(held["reason"], "found");
  for (const char* const name : {"x", "y", "storedX", "storedY"}) EXPECT_EQ(held[name], before[name]) << name;
  for (const char* const name : {"points", "auxVal1", "auxVal2", "auxVal3", "auxVal4", "trackVal"}) {
    EXPECT_EQ(held[name], 0) << name;
  }
  EXPECT_TRUE(held["stripePts"].empty() && held["storedStripePts"].empty());
}

// In the records, and drawn.
TEST_F(ReportTest, GroovesTellTheirElementsPointsAndNumbers) {
  using TNames = std::vector<std::string>;
  const std::pair<std::string, TNames> rows[] = {
      {"v", {"left plate", "left flank", "right flank", "right plate"}},
      {"bevel", {"left plate", "left flank", "right plate"}},
      {"flareV", {"left plate", "left arc", "right arc", "right plate"}}};
  for (const auto& [joint, names] : rows) {
    SCOPED_TRACE(joint);
    simulate(joint, "--type " + joint + " --level clean --frames 1 --seed 6");
    const auto record = recordsOf(zelweldOk("track " + joint + " --params " + joint +
                                            "/params.json --explain --format jsonl --out " + joint + "_seen")
                                      .out)
                            .front();
    ASSERT_TRUE(record["found"]) << record["reason"];
    const auto& attempt = record["trace"]["attempts"][record["trace"]["decisive"].get<std::size_t>()];
    TNames found;
    for (const auto& piece : attempt["pieces"]) {
      found.push_back(piece["name"]);
      EXPECT_EQ(piece.contains("radiusPx"), found.back().find("arc") != std::string::npos) << found.back();
    }
    EXPECT_EQ(found, names);
    const auto yesOrNo = std::count_if(attempt["checks"].begin(), attempt["checks"].end(),
                                       [](const nlohmann::json& check) { return check["limit"].is_null(); });
    EXPECT_LE(yesOrNo, joint == "flareV" ? 8 : 7)
        << "region, layout, meeting, light; a point, whole, in the image";
    const cv::Mat drawn = cv::imread((folder / (joint + "_seen/000000_frame_0000.png")).string());
    for (const auto& feature : attempt["features"]) {
      const cv::Point at(feature["pos"][0].get<int>(), feature["pos"][1].get<int>());
      cv::Mat marks;  // the light blue of a ring
      cv::inRange(drawn(cv::Rect(at - cv::Point(9, 9), cv::Size(19, 19)) & cv::Rect({}, drawn.size())),
                  cv::Scalar(220, 220, 90), cv::Scalar(255, 255, 150), marks);
      EXPECT_GT(cv::countNonZero(marks), 3) << feature["name"];
    }
    EXPECT_GE(attempt["features"].size(), 3U);
  }
}

TEST(PictureShelf, OrdinaryFramesAreThinnedEvenlyBeforeNotableOnes) {
  struct TRow {
    const char* name;
    std::size_t limit;  // bytes; every text has 10
    int notableEvery;
    std::size_t notable, ordinary;  // kept of 400 frames
  };
  const TRow rows[] = {{"all fit", 4000, 10, 40, 360},
                       {"every 8th ordinary one", 900, 10, 40, 45},
                       {"notable ones too", 600, 2, 25, 25},
                       {"nothing fits", 5, 2, 1, 1}};
  for (const TRow& row : rows) {
    SCOPED_TRACE(row.name);
    tool::TPictureShelf shelf(row.limit);
    for (int frame = 0; frame < 400; ++frame) {
      if (shelf.wantsNext(frame % row.notableEvery == 0)) shelf.put(frame, std::string(10, 'x'));
    }
    std::size_t notable = 0;
    for (const auto& [frame, text] : shelf.texts()) notable += frame % row.notableEvery == 0 ? 1 : 0;
    EXPECT_EQ(notable, row.notable);
    EXPECT_EQ(shelf.texts().size() - notable, row.ordinary);
  }
}

TEST(Base64, GivesTheCodesOfItsStandard) {
  const std::pair<std::string, std::string> rows[] = {
      {"", ""}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="}, {"\xfb\xff", "+/8="}};
  for (const auto& [text, code] : rows) EXPECT_EQ(tool::base64({text.begin(), text.end()}), code);
}
