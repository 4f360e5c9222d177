// zelweld identify: which joint each frame may show.
#include "program.h"

namespace fs = std::filesystem;

TEST_F(ZelweldTest, IdentifyRanksTheJointsOfEveryFrameAndSumsUp) {
  simulate("f", "--type v --level clean --frames 3 --seed 5");
  simulate("plain", "--type plain --frames 1");
  fs::copy(folder / "plain/frame_0000.png", folder / "f/frame_0001.png", fs::copy_options::overwrite_existing);
  const TRun run = zelweldOk("identify f --format jsonl");
  const auto records = recordsOf(run.out);
  ASSERT_EQ(records.size(), 3U);
  EXPECT_TRUE(records[1]["ranking"].empty());
  for (const std::size_t n : {0U, 2U}) {
    const auto& ranking = records[n]["ranking"];
    ASSERT_FALSE(ranking.empty()) << n;
    EXPECT_EQ(ranking[0]["joint"], "vGroove");
    EXPECT_EQ(ranking.back()["margin"], nullptr);
    for (std::size_t i = 1; i < ranking.size(); ++i) {
      const double lead = ranking[i - 1]["score"].get<double>() - ranking[i]["score"].get<double>();
      EXPECT_NEAR(ranking[i - 1]["margin"].get<double>(), lead, 2e-3);
      EXPECT_GE(lead, 0.0);
    }
  }
  EXPECT_EQ(run.err.rfind("frames 3, vGroove 2 (66.7 %), no joint 1 (33.3 %), ms per frame: median ", 0), 0U)
      << run.err;
  const auto table = linesOf(zelweldOk("identify f --rotate 180").out);
  ASSERT_EQ(table.size(), 4U);
  EXPECT_NE(table[1].find("  vGroove  "), std::string::npos) << table[1];
  EXPECT_NE(table[2].find("  no joint  "), std::string::npos) << table[2];
  const auto csv = linesOf(zelweldOk("identify f/frame_0000.png f/frame_0001.png --format csv").out);
  ASSERT_EQ(csv.size(), 2 + records[0]["ranking"].size());
  EXPECT_EQ(csv[1].rfind("0,f/frame_0000.png,1,vGroove,", 0), 0U) << csv[1];
  EXPECT_EQ(csv.back().rfind("1,f/frame_0001.png,0,,,,", 0), 0U) << csv.back();
  for (const std::string& line : csv) EXPECT_EQ(std::count(line.begin(), line.end(), ','), 6) << line;
  expectRefused(2, {{"identify f --format xml", "'xml': use table, jsonl, csv"},
                    {"identify f --roi 600,0,41,10", "the region reaches outside the image, which is 640x480"}});
  expectRefused(3, {{"identify nowhere", "nowhere"}});
}
