// What zelweld says and how it ends when something is wrong.
#include "program.h"

#include <opencv2/imgcodecs.hpp>

namespace fs = std::filesystem;

TEST_F(ZelweldTest, WrongUsageIsNamedAndExitsWith2) {
  simulate("f", "--type gap --frames 1");
  writeFile(folder / "a.json", R"({"weldType": "gap"})");
  const std::vector<TRefusal> rows = {
      {"", "subcommand"},
      {"trak f", "'trak': use track, report, simulate, params"},
      {"track f", "--type with one of buttGap"},
      {"track f --type gab", "'gab': use buttGap, lap, corner, plate, "},
      {"track f --type none", "unknown joint type 'none'"},
      {"track f --type gap --position upper", "buttGap knows no position 'upper': use centre, left, right"},
      {"track f --type corner --position 1", "corner knows no position '1': use centre"},
      {"simulate --type lap --out o --position left", "lap knows no position 'left': use centre, upper, lower"},
      {"simulate --plate dent --out o", "'dent': use tight, gap, step, scribe, none"},
      {"seam f --polarity grey", "'grey': use dark, bright, edge, automatic"},
      {"seam f --at 3,4", "--at and --band belong together"},
      {"seam f --at 3 --band 5", "'3' is no place; write x,y"},
      {"track f --type gap --source sound", "'sound': use stripe, contrast, both"},
      {"track f --type gap --set dPara2", "'dPara2' is no assignment; write name=value"},
      {"track f --type gap --set dPara7=3",
       "buttGap reads no parameter 'dPara7': it reads lineTolerancePx (dPara2), "},
      {"track f --type gap --set dpara8=3", "no parameter 'dpara8': did you mean minGapPx (dPara8)?"},
      {"track f --type gap --set minGpaPx=3", "'minGpaPx': did you mean minGapPx (dPara8)?"},
      {"track f --type gap --set stripeAngle=3",
       "did you mean stripeAngleDeg.min (angleRange4.min), stripeAngleDeg.max (angleRange4.max)?"},
      {"track f --type gap --set dPara2=0", "lineTolerancePx (dPara2) must be above 0, up to 1000, not 0"},
      {"track f --type gap --set dPara2=2px", "lineTolerancePx (dPara2) must be above 0, up to 1000, not \"2px\""},
      {"track f --type gap --rotate 45", "'45' is no quarter turn: use 90, 180, 270"},
      {"track f --type gap --channel pink", "'pink': use grey, red"},
      {"track f --type gap --channel red-excess", "frame_0000.png is grey"},
      {"track f --type gap --roi 1,2,3", "write x,y,width,height"},
      {"track f --type gap --roi 600,0,41,10", "frame_0000.png, which is 640x480"},
      {"track f --type gap --format xml", "'xml': use table, jsonl, csv"},
      {"track f --type gap --points", "--points needs --format jsonl"},
      {"track f --type gap --out f", "f holds input files"},
      {"track f --type gap --extraction edges", "'edges': use edgePairs, ridge, automatic"},
      {"track f --type gap --max-jump 0", "--max-jump"},
      {"report f --type gap --out f", "f is a folder; name the page, as in f/report.html"},
      {"simulate --type gap --out o --level mad", "'mad': use clean, noisy, harsh"},
      {"simulate --type gap --out o --size 640", "write WIDTHxHEIGHT"},
      {"simulate --type gap --out o --size 100x480", "160 to 8192"},
      {"sweep f --type gap", "no range is given; write one as name=from:to:step"},
      {"sweep f --type gap --set dPara8=1:3:1 --set dPara2=1:3:1", "more than one range"},
      {"sweep f --type gap --set dPara8=3:1:1", "dPara8=3:1:1: the range must ascend"},
      {"sweep f --type gap --set dPara8=0:3:1", "minGapPx (dPara8) must be 2 to 100000, not 0"},
      {"sweep f --type corner --set nPara1=1:3:0.5", "maxMissingColumns (nPara1) must be a whole number"},
      {"sweep f --type corner --set haveGap=0:1:1", "allowsGap (haveGap) is true or false"},
      {"compare a.json", "B.json"},
      {"exposure f --target-mean 0", "--target-mean: Value 0 not in range 1 to 254"},
  };
  expectRefused(2, rows);
  EXPECT_FALSE(fs::exists(folder / "o"));
}

TEST_F(ZelweldTest, WrongParameterFilesAreNamedAndExitWith2) {
  simulate("f", "--type gap --frames 1");
  const std::string nested = std::string(200000, '[') + std::string(200000, ']');
  const std::pair<std::string, const char*> rows[] = {
      {"{\n\"weldType\": \"gap\",\n\"dPara2\": }", "no valid JSON at line 3"},
      {R"({"weldType": "gap", "dPara22": 1})", "buttGap reads no parameter 'dPara22'"},
      {R"({"weldType": "corner", "haveGap": 1})", "allowsGap (haveGap) must be true or false, not 1"},
      {R"({"weldType": "corner", "nPara1": 2.5})",
       "maxMissingColumns (nPara1) must be a whole number 1 to 100000, not 2.5"},
      {"[]", "holds no JSON object"},
      {R"({"weldType": 11})", "unknown joint type '11'"},
      {R"({"weldType": "gap", "dPara2": 1e999})", "holds a number that is too large"},
      {R"({"weldType": "gap", "a\nb": 1})", "buttGap reads no parameter 'a b'"},
      {R"({"weldType": "gap", "dPara2": )" + nested + "}",
       "lineTolerancePx (dPara2) must be above 0, up to 1000, not array"},
      {R"({"weldType": )" + nested + "}", "unknown joint type 'array'"},
      {std::string((1 << 20) + 1, ' '), "holds more than 1 MiB"},
      {R"({"weldType": "gap", "dPara8": 12, "minGapPx": 12})", "sets minGapPx (dPara8) twice"},
      {R"({"weldType": "gap", "dPara8": 12, "dPara8": 13})", "names dPara8 twice"},
      {R"({"weldType": "gap", "weldPosType": "upper"})", "buttGap knows no position 'upper'"},
  };
  for (const auto& [text, message] : rows) {
    writeFile(folder / "p.json", text);
    expectRefused(2, {{"track f --params p.json", std::string("p.json: ") + message}});
  }
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
  writeFile(folder / "a.json", R"({"weldType": "gap"})");
  const std::string track = "track --type gap ";
  const std::vector<TRefusal> rows = {
      {track + "cut.png", "cut.png: no whole image"},
      {track + "cut.jpg", "cut.jpg: the image is cut off"},
      {track + "cut.bmp", "cut.bmp: no whole image"},
      {track + "empty.png", "empty.png: the file is empty"},
      {track + "text.png", "text.png: no whole image"},
      {track + "text.avi", "text.avi: no video"},
      {track + "gone.png", "gone.png: no such file"},
      {track + "nothing", "nothing: the folder holds no image files (.png"},
      {track + "gone_%03d.png", "gone_%03d.png: no file fits"},
      {track + "f --params gone.json", "gone.json: cannot be read"},
      {track + "f --params dir.json", "dir.json: cannot be read"},
      {"compare a.json gone.json f", "gone.json: cannot be read"},
      {"features gone --type gap", "gone: no such file"},
  };
  expectRefused(3, rows);
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
  expectRefused(1, {{"track f --type gap --out file/seen", "file/seen: no folder"},
                    {"simulate --type gap --out file", "file: no folder"}});
  if (!fs::exists("/dev/full")) return;
  writeFile(folder / "a.json", R"({"weldType": "gap"})");
  expectRefused(1, {{"track f --type gap >/dev/full", "takes no more records"},
                    {"params --type gap >/dev/full", "takes no more text"},
                    {"compare a.json a.json f >/dev/full", "standard output takes no more"},
                    {"exposure f >/dev/full", "standard output takes no more"},
                    {"features f --type gap >/dev/full", "standard output takes no more"}});
}
