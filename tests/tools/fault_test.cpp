// zelweld while its surroundings fail: signals, a reader that goes away, files that vanish, a full disk.
#include "program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <opencv2/imgcodecs.hpp>

#include <csignal>
#include <cstdio>

namespace fs = std::filesystem;

namespace {

// A run whose standard output is a pipe that holds less than one record with points: it waits inside a record
// until the test reads on.
class TWaitingRun {
public:
  TWaitingRun(const fs::path& testFolder, const std::string& arguments) : err(testFolder / ".stderr") {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    fcntl(ends[1], F_SETPIPE_SZ, 4096);
    const std::string command = "cd '" + testFolder.string() + "' && exec '" ZELWELD_PROGRAM "' " + arguments +
                                " 2>'" + err.string() + "'";
    child = fork();
    if (child == 0) {
      std::signal(SIGINT, SIG_DFL);  // a test runner in the background has it ignored
      dup2(ends[1], STDOUT_FILENO);
      close(ends[0]);
      close(ends[1]);
      execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
      _exit(127);
    }
    close(ends[1]);
    out = fdopen(ends[0], "r");
  }
  ~TWaitingRun() { finish(); }
  TWaitingRun(const TWaitingRun&) = delete;
  TWaitingRun& operator=(const TWaitingRun&) = delete;

  std::string readLine() {
    std::string line;
    for (int c = std::fgetc(out); c != EOF; c = std::fgetc(out)) {
      line += static_cast<char>(c);
      if (c == '\n') break;
    }
    return line;
  }

  void send(int signal) const { kill(child, signal); }

  // Goes away without reading on.
  TRun finish() {
    if (out != nullptr) std::fclose(out);
    out = nullptr;
    int status = 0;
    if (child > 0) waitpid(child, &status, 0);
    child = -1;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, "", readFile(err)};
  }

  TRun readToTheEnd() {
    std::string rest;
    for (std::string line = readLine(); !line.empty(); line = readLine()) rest += line;
    TRun run = finish();
    run.out = rest;
    return run;
  }

private:
  fs::path err;
  pid_t child = -1;
  FILE* out = nullptr;
};

// Waits until somebody opens a file.
class TOpenWatch {
public:
  explicit TOpenWatch(const fs::path& file) : events{inotify_init(), POLLIN, 0} {
    EXPECT_GE(inotify_add_watch(events.fd, file.c_str(), IN_OPEN), 0);
  }
  ~TOpenWatch() { close(events.fd); }
  TOpenWatch(const TOpenWatch&) = delete;
  TOpenWatch& operator=(const TOpenWatch&) = delete;

  bool wait() {
    constexpr int kPatienceMs = 20'000;
    return poll(&events, 1, kPatienceMs) == 1;
  }

private:
  pollfd events;
};

// Holds every file that this process and its children write to so many bytes, like a disk that fills up.
class TFileSizeLimit {
public:
  explicit TFileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limited{bytes, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limited);
  }
  ~TFileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before); }
  TFileSizeLimit(const TFileSizeLimit&) = delete;
  TFileSizeLimit& operator=(const TFileSizeLimit&) = delete;

private:
  rlimit before{};
};

std::vector<std::string> namesIn(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
  return names;
}

const std::string kTrack = "track f --type gap --format jsonl --points";
constexpr std::size_t kFrames = 12;

}  // namespace

TEST_F(ZelweldTest, StopSignalEndsTheRunAfterTheFrameAtHand) {
  simulate("f", "--type gap --frames 12");
  struct TSignal {
    int number;
    int exitCode;
    const char* name;
  };
  for (const TSignal signal : {TSignal{SIGINT, 130, "SIGINT"}, TSignal{SIGTERM, 143, "SIGTERM"}}) {
    SCOPED_TRACE(signal.name);
    TWaitingRun waiting(folder, kTrack + " --out seen");
    const std::string first = waiting.readLine();
    waiting.send(signal.number);
    const TRun run = waiting.readToTheEnd();
    EXPECT_EQ(run.exitCode, signal.exitCode);
    const std::size_t records = recordsOf(first + run.out).size();
    EXPECT_LT(records, kFrames);
    const auto lines = linesOf(run.err);
    ASSERT_EQ(lines.size(), 2U) << run.err;
    EXPECT_EQ(lines[0].rfind("frames " + std::to_string(records) + ",", 0), 0U) << run.err;
    EXPECT_NE(lines[1].find(signal.name), std::string::npos) << run.err;
    const auto images = namesIn(folder / "seen");
    EXPECT_EQ(images.size(), records);
    for (const std::string& name : images) EXPECT_FALSE(cv::imread(folder / "seen" / name).empty()) << name;
    fs::remove_all(folder / "seen");
  }
}

// A report tells of the frames so far; what needs all frames says nothing.
TEST_F(ZelweldTest, StopSignalLeavesAWholeReportAndNoHalfComparison) {
  simulate("f", "--type gap --frames 2");
  zelweldOk("params --type gap --format json > p.json");
  std::string frames;
  for (int i = 0; i < 1000; ++i) frames += " f";
  for (const char* const command : {"report --type gap --out page.html", "compare p.json p.json",
                                    "sweep --type gap --set dPara8=5:9:2 --out page.html"}) {
    SCOPED_TRACE(command);
    const bool isReport = command[0] == 'r';
    TOpenWatch watch(folder / "f/frame_0001.png");
    TWaitingRun running(folder, command + frames);
    ASSERT_TRUE(watch.wait());  // the first frame is done
    running.send(SIGINT);
    const TRun run = running.readToTheEnd();
    EXPECT_EQ(run.exitCode, 130);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("SIGINT"), std::string::npos) << run.err;
    EXPECT_EQ(run.err.find("frames 2000"), std::string::npos) << "the run went on";
    EXPECT_FALSE(fs::exists(folder / "page.html.part"));
    ASSERT_EQ(fs::exists(folder / "page.html"), isReport);
    if (!isReport) continue;
    const std::string page = readFile(folder / "page.html");
    EXPECT_EQ(page.substr(page.size() - 8), "</html>\n");
    fs::remove(folder / "page.html");
  }
}

TEST_F(ZelweldTest, ReaderThatGoesAwayEndsTheRunWith1) {
  simulate("f", "--type gap --frames 12");
  TWaitingRun waiting(folder, kTrack);
  EXPECT_EQ(recordsOf(waiting.readLine()).size(), 1U);
  const TRun run = waiting.finish();
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.err, "zelweld: standard output takes no more records (closed pipe or full disk)\n");
}

TEST_F(ZelweldTest, FrameThatVanishesMidwayIsNamedAfterTheRecordsBeforeIt) {
  simulate("f", "--type gap --frames 12");
  TWaitingRun waiting(folder, kTrack);
  const std::string first = waiting.readLine();
  fs::remove(folder / "f/frame_0011.png");
  const TRun run = waiting.readToTheEnd();
  EXPECT_EQ(run.exitCode, 3);
  EXPECT_EQ(recordsOf(first + run.out).size(), kFrames - 1);
  EXPECT_EQ(run.err, "zelweld: f/frame_0011.png: no such file\n");
}

TEST_F(ZelweldTest, FileThatTheDiskRefusesIsNamedAndNotLeftInPieces) {
  simulate("f", "--type gap --frames 1");
  const std::string trackOne = "track f --type gap --format jsonl --out ";
  {
    const TFileSizeLimit limit(2000);
    const TRun run = zelweld(trackOne + "seen");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(recordsOf(run.out).size(), 1U);
    EXPECT_EQ(run.err,
              "zelweld: seen/000000_frame_0000.png: cannot be written; check the folder and the free space\n");
    EXPECT_TRUE(fs::is_empty(folder / "seen"));
  }
  // Not even root makes files here.
  const TRun run = zelweld(trackOne + "/proc/self");
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.err.rfind("zelweld: /proc/self/000000_frame_0000.png: cannot be written", 0), 0U) << run.err;
}

TEST_F(ZelweldTest, TruthOnAFullDiskEndsWithAWholeLine) {
  const TFileSizeLimit limit(4000);  // small frames stay below it, the list of a hundred does not
  const TRun run = zelweld("simulate --type gap --size 160x160 --frames 100 --out f");
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.err.rfind("zelweld: f/truth.csv: cannot be written", 0), 0U) << run.err;
  const std::string truth = readFile(folder / "f/truth.csv");
  EXPECT_GT(truth.size(), 3800U);
  EXPECT_EQ(truth.back(), '\n');
}
