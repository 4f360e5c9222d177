// zelweld while its surroundings fail: signals, a reader that goes away, a full disk.
#include "program.h"

#include <opencv2/imgcodecs.hpp>

#include <csignal>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kFrames = 12;  // their records do not fit into a pipe: the program waits for its reader
const std::string kTrack = "track f --type gap --format jsonl --points";

}  // namespace

class FaultTest : public ZelweldTest {
protected:
  void SetUp() override {
    ZelweldTest::SetUp();
    simulate("f", "--type gap --frames " + std::to_string(kFrames));
    std::signal(SIGINT, SIG_DFL);  // a test runner in the background has it ignored
  }

  // Runs zelweld until it waits for its reader, sends it a signal, and reads on.
  TRun trackUntil(const std::string& signal) const {
    return shell("{ sh -c 'echo $$ >pid; exec \"$0\" " + kTrack + " --out seen' \"$Z\"; echo $? >code; } | " +
                 "{ IFS= read -r first; kill -s " + signal +
                 " $(cat pid); echo \"$first\"; cat; }; exit $(cat code)");
  }
};

TEST_F(FaultTest, StopSignalEndsTheRunAfterTheFrameAtHand) {
  for (const auto& [name, exitCode] : {std::pair{"INT", 130}, {"TERM", 143}, {"HUP", 129}}) {
    SCOPED_TRACE(name);
    const TRun run = trackUntil(name);
    EXPECT_EQ(run.exitCode, exitCode);
    const std::size_t records = recordsOf(run.out).size();
    EXPECT_LT(records, kFrames);
    const auto lines = linesOf(run.err);
    ASSERT_EQ(lines.size(), 2U) << run.err;
    EXPECT_EQ(lines[0].rfind("frames " + std::to_string(records) + ",", 0), 0U) << run.err;
    EXPECT_NE(lines[1].find(std::string("SIG") + name), std::string::npos) << run.err;
    std::size_t images = 0;
    for (const auto& entry : fs::directory_iterator(folder / "seen")) {
      ++images;
      EXPECT_FALSE(cv::imread(entry.path()).empty()) << entry.path();
    }
    EXPECT_EQ(images, records);
    fs::remove_all(folder / "seen");
  }
}

// A report tells of the frames so far; what needs all frames says nothing.
TEST_F(FaultTest, StopSignalLeavesAWholeReportAndNoHalfComparison) {
  zelweldOk("params --type gap --format json > p.json");
  std::string frames;
  for (int i = 0; i < 1000; ++i) frames += " f";
  for (const char* const command : {"report --type gap --out page.html", "compare p.json p.json"}) {
    SCOPED_TRACE(command);
    const TRun run = shell(std::string("timeout --preserve-status -s INT 4 \"$Z\" ") + command + frames);
    EXPECT_EQ(run.exitCode, 130);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("SIGINT"), std::string::npos) << run.err;
    EXPECT_FALSE(fs::exists(folder / "page.html.part"));
    ASSERT_EQ(fs::exists(folder / "page.html"), command[0] == 'r');
    if (command[0] != 'r') continue;
    const std::string page = readFile(folder / "page.html");
    EXPECT_EQ(page.substr(page.size() - 8), "</html>\n");
    fs::remove(folder / "page.html");
  }
}

TEST_F(FaultTest, ReaderThatGoesAwayEndsTheRunWith1) {
  const TRun run = shell("{ \"$Z\" " + kTrack + "; echo $? >code; } | head -n 1; exit $(cat code)");
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.err, "zelweld: standard output takes no more records (closed pipe or full disk)\n");
}

// ulimit counts blocks of 512 bytes.
TEST_F(FaultTest, FileThatTheDiskRefusesIsNamedAndNotLeftInPieces) {
  const std::string trackOne = "track f/frame_0000.png --type gap --format jsonl --out ";
  const TRun run = shell("ulimit -f 4 && \"$Z\" " + trackOne + "seen");
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(recordsOf(run.out).size(), 1U);
  EXPECT_EQ(run.err,
            "zelweld: seen/000000_frame_0000.png: cannot be written; check the folder and the free space\n");
  EXPECT_TRUE(fs::is_empty(folder / "seen"));
  // Not even root makes files here.
  expectRefused(1, {{trackOne + "/proc/self", "zelweld: /proc/self/000000_frame_0000.png: cannot be written"}});
}

TEST_F(ZelweldTest, TruthOnAFullDiskEndsWithAWholeLine) {
  // Small frames stay below the limit, the list of a hundred does not.
  const TRun run = shell("ulimit -f 8 && \"$Z\" simulate --type gap --size 160x160 --frames 100 --out f");
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.err.rfind("zelweld: f/truth.csv: cannot be written", 0), 0U) << run.err;
  const std::string truth = readFile(folder / "f/truth.csv");
  EXPECT_GT(truth.size(), 3800U);
  EXPECT_EQ(truth.back(), '\n');
}
