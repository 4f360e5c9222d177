// What zelweld says and how it ends when something is wrong.
#include "program.h"

#include <opencv2/imgcodecs.hpp>

namespace fs = std::filesystem;

namespace {

struct TRow {
  std::string arguments;
  std::string text;  // part of the one line on standard error
};

void expectOneLine(const TRun& run, int exitCode, const TRow& row) {
  EXPECT_EQ(run.exitCode, exitCode) << row.arguments;
  EXPECT_EQ(linesOf(run.err).size(), 1U) << row.arguments << "\n" << run.err;
  EXPECT_NE(run.err.find(row.text), std::string::npos) << row.arguments << "\n" << run.err;
}

}  // namespace

TEST_F(ZelweldTest, WrongUsageIsNamedAndExitsWith2) {
  simulate("f", "--type gap --frames 1");
  writeFile(folder / "broken.json", "{\n\"weldType\": \"gap\",\n\"dPara2\": }");
  writeFile(folder / "unknown.json", R"({"weldType": "gap", "dPara22": 1})");
  writeFile(folder / "kind.json", R"({"weldType": "corner", "haveGap": 1})");
  writeFile(folder / "range.json", R"({"weldType": "corner", "nPara1": 2.5})");
  writeFile(folder / "list.json", "[]");
  writeFile(folder / "type.json", R"({"weldType": 11})");
  writeFile(folder / "huge.json", R"({"weldType": "gap", "dPara2": 1e999})");
  writeFile(folder / "lines.json", R"({"weldType": "gap", "a\nb": 1})");
  const std::string nested = std::string(200000, '[') + std::string(200000, ']');
  writeFile(folder / "nested.json", R"({"weldType": "gap", "dPara2": )" + nested + "}");
  writeFile(folder / "nested_type.json", R"({"weldType": )" + nested + "}");
  writeFile(folder / "long.json", std::string((1 << 20) + 1, ' '));
  const std::vector<TRow> rows = {
      {"", "subcommand"},
      {"trak f", "'trak': use track, report, simulate, params"},
      {"track --type gap", "INPUT"},
      {"track f", "--type with one of buttGap"},
      {"track f --type gab", "'gab': use buttGap, lap, corner, plate, stripePresence"},
      {"track f --type v-groove", "'vGroove' has no detector: use buttGap"},
      {"track f --type gap --position top", "'top': use centre, left, right, upper, lower"},
      {"track f --type gap --set dPara2", "'dPara2' is no assignment; write name=value"},
      {"track f --type gap --set dPara7=3", "buttGap reads no parameter 'dPara7': it reads dPara2"},
      {"track f --type gap --set dPara2=0", "dPara2 must be above 0, up to 1000, not 0"},
      {"track f --type gap --set dPara2=2px", "dPara2 must be above 0, up to 1000, not \"2px\""},
      {"track f --type gap --rotate 45", "'45' is no quarter turn: use 90, 180, 270"},
      {"track f --type gap --channel pink", "'pink': use grey, red"},
      {"track f --type gap --channel red-excess", "frame_0000.png is grey"},
      {"track f --type gap --roi 1,2,3", "write x,y,width,height"},
      {"track f --type gap --roi 600,0,41,10", "frame_0000.png, which is 640x480"},
      {"track f --type gap --format xml", "'xml': use table, jsonl, csv"},
      {"track f --type gap --points", "--points needs --format jsonl"},
      {"track f --type gap --out f", "f holds input files"},
      {"track f --type gap --extraction edges", "'edges': use edgePairs, ridge, automatic"},
      {"track f --type gap --exact --hold 2", "--hold"},
      {"track f --type gap --max-jump 0", "--max-jump"},
      {"report f --type gap --out f", "f is a folder; name the page, as in f/report.html"},
      {"track f --params broken.json", "broken.json: no valid JSON at line 3"},
      {"track f --params unknown.json", "unknown.json: buttGap reads no parameter 'dPara22'"},
      {"track f --params kind.json", "kind.json: haveGap must be true or false, not 1"},
      {"track f --params range.json", "range.json: nPara1 must be a whole number 1 to 100000, not 2.5"},
      {"track f --params list.json", "list.json: holds no JSON object"},
      {"track f --params type.json", "type.json: unknown joint type '11'"},
      {"track f --params huge.json", "huge.json: holds a number that is too large"},
      {"track f --params lines.json", "lines.json: buttGap reads no parameter 'a b'"},
      {"track f --params nested.json", "nested.json: dPara2 must be above 0, up to 1000, not array"},
      {"track f --params nested_type.json", "nested_type.json: unknown joint type 'array'"},
      {"track f --params long.json", "long.json: holds more than 1 MiB"},
      {"simulate --type gap --out o --level mad", "'mad': use clean, noisy, harsh"},
      {"simulate --type gap --out o --size 640", "write WIDTHxHEIGHT"},
      {"simulate --type gap --out o --size 100x480", "160 to 8192"},
      {"simulate --type gap --out o --frames 0", "--frames"},
  };
  for (const TRow& row : rows) expectOneLine(zelweld(row.arguments), 2, row);
  EXPECT_FALSE(fs::exists(folder / "o"));
}

TEST_F(ZelweldTest, UnreadableInputIsNamedAndExitsWith3) {
  simulate("f", "--type gap --frames 1 --level noisy");
  for (const std::string kind : {".png", ".jpg", ".bmp"}) {
    cv::imwrite((folder / ("whole" + kind)).string(), cv::imread((folder / "f/frame_0000.png").string()));
    const std::string whole = readFile(folder / ("whole" + kind));
    writeFile(folder / ("cut" + kind), whole.substr(0, whole.size() / 2));
  }
  writeFile(folder / "empty.png", "");
  writeFile(folder / "text.png", "not an image\n");
  writeFile(folder / "text.avi", "not a video\n");
  fs::create_directories(folder / "nothing");
  fs::create_directories(folder / "dir.json");
  const std::vector<TRow> rows = {
      {"cut.png", "cut.png: no whole image"},
      {"cut.jpg", "cut.jpg: the image is cut off"},
      {"cut.bmp", "cut.bmp: no whole image"},
      {"empty.png", "empty.png: the file is empty"},
      {"text.png", "text.png: no whole image"},
      {"text.avi", "text.avi: no video"},
      {"gone.png", "gone.png: no such file"},
      {"nothing", "nothing: the folder holds no image files (.png"},
      {"gone_%03d.png", "gone_%03d.png: no file fits"},
      {"f --params gone.json", "gone.json: cannot be read"},
      {"f --params dir.json", "dir.json: cannot be read"},
  };
  for (const TRow& row : rows) expectOneLine(zelweld("track --type gap " + row.arguments), 3, row);
}

TEST_F(ZelweldTest, BadFrameInTheMiddleKeepsEverythingBeforeIt) {
  simulate("f", "--type gap --frames 4");
  writeFile(folder / "f/frame_0002.png", readFile(folder / "f/frame_0002.png").substr(0, 500));
  const TRun run = zelweld("track f --type gap --format jsonl --out seen");
  EXPECT_EQ(run.exitCode, 3);
  EXPECT_NE(run.err.find("frame_0002.png"), std::string::npos);
  const auto records = recordsOf(run.out);
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(records[1]["file"], "f/frame_0001.png");
  EXPECT_FALSE(cv::imread((folder / "seen/000001_frame_0001.png").string()).empty());
  EXPECT_FALSE(fs::exists(folder / "seen/000002_frame_0002.png"));
}

TEST_F(ZelweldTest, OutputThatCannotBeWrittenExitsWith1) {
  simulate("f", "--type gap --frames 2");
  writeFile(folder / "file", "in the way");
  expectOneLine(zelweld("track f --type gap --out file/seen"), 1, {"--out", "file/seen: no folder"});
  expectOneLine(zelweld("simulate --type gap --out file"), 1, {"simulate", "file: no folder"});
  if (fs::exists("/dev/full")) {
    expectOneLine(zelweld("track f --type gap >/dev/full"), 1, {"track", "takes no more records"});
    expectOneLine(zelweld("params --type gap >/dev/full"), 1, {"params", "takes no more text"});
  }
}
