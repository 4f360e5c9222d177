// What zelweld says and how it ends when something is wrong.
#include "program.h"

#include <opencv2/imgcodecs.hpp>

#include <sys/stat.h>

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
      {"track f --type gap --set dPara2=2px", "lineTolerancePx (dPara2) must be above 0, up to 1000, not 2px"},
      {"track f --type gap --rotate 45", "'45' is no quarter turn: use 90, 180, 270"},
      {"track f --type gap --channel pink", "'pink': use grey, red"},
      {"track f --type gap --channel red-excess", "frame_0000.png: the channel red-excess needs colour"},
      {"track f --type gap --roi 1,2,3", "write x,y,width,height"},
      {"track f --type gap --roi 600,0,41,10", "the region reaches outside the image, which is 640x480"},
      {"track f --type gap --format xml", "'xml': use table, jsonl, csv"},
      {"track f --type gap --points", "--points needs --format jsonl"},
      {"track f --type gap --out f", "f holds input files"},
      {"track f --type gap --extraction edges", "'edges': use edgePairs, ridge, automatic"},
      {"track f --type gap --max-jump 0", "--max-jump: '0' is no number above 0"},
      {"track f --type gap --hold -1", "--hold: '-1' is no number from 0 upwards"},
      {"report f --type gap --out f/frame_0000.png", "f/frame_0000.png is read by this run"},
      {"report f --job a.json --out a.json", "a.json is read by this run"},
      {"simulate --type lap --frames 1 --out f", "f holds other files; name a new folder"},
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
      {"compare a.json f", "A and B are the same"},
      {"compare a.json --set minGapPx=0 f", "minGapPx (dPara8) must be 2 to 100000, not 0"},
      {"params --type gap --format xml", "'xml': use table, json, job"},
      {"exposure f --target-mean 0", "--target-mean: Value 0 not in range 1 to 254"},
  };
  expectRefused(2, rows);
  EXPECT_FALSE(fs::exists(folder / "o"));
}

TEST_F(ZelweldTest, WrongParameterFilesAreNamedAndExitWith2) {
  simulate("f", "--type gap --frames 1");
  const std::string nested = std::string(200000, '[') + std::string(200000, ']');
  std::string names;
  for (int i = 0; i < 100000; ++i) names += "\"" + std::to_string(i) + "\":1,";
  const std::pair<std::string, const char*> rows[] = {
      {"{\n\"weldType\": \"gap\",\n\"dPara2\": }", "line 3: no valid JSON: "},
      {"{\"weldType\": \"gap\",\n \"dPara22\": 1}", "line 2: buttGap reads no parameter 'dPara22'"},
      {R"({"weldType": "corner", "haveGap": 1})", "line 1: allowsGap (haveGap) must be true or false, not 1"},
      {R"({"weldType": "corner", "nPara1": 2.5})",
       "maxMissingColumns (nPara1) must be a whole number 1 to 100000, not 2.5"},
      {"[]", "holds no JSON object"},
      {R"({"dPara2": 1})", "names no joint: give weldType one of buttGap, lap, "},
      {R"({"weldType": 11})", "unknown joint type '11'"},
      {R"({"weldType": "gap", "dPara2": 1e999})", "the number 1e999 is too large"},
      {R"({"weldType": "gap", "a\nb": 1})", "buttGap reads no parameter 'a b'"},
      {R"({"weldType": "gap", "dPara2": [1]})",
       "lineTolerancePx (dPara2) must be above 0, up to 1000, not a list"},
      {R"({"weldType": "gap", "dPara2": )" + nested + "}", "nested in more than 16 levels"},
      {R"({"a": )" + nested + R"(, "weldType": 0})", "nested in more than 16 levels"},
      {"{" + names + R"("weldType": 0})", "holds more than 1000 values"},
      {std::string((1 << 20) + 1, ' '), "holds more than 1 MiB"},
      {R"({"weldType": "gap", "dPara8": 12, "minGapPx": 12})", "sets minGapPx (dPara8) twice"},
      {R"({"weldType": "gap", "dPara8": 12, "dPara8": 13})", "names dPara8 twice"},
      {R"({"weldType": "gap", "weldPosType": "upper"})", "buttGap knows no position 'upper'"},
  };
  for (const auto& [text, message] : rows) {
    writeFile(folder / "p.json", text);
    expectRefused(2, {{"track f --params p.json", message}});
  }
}

TEST_F(ZelweldTest, UnreadableInputIsNamedAndExitsWith3) {
  simulate("f", "--type gap --frames 1 --level noisy");
  for (const std::string kind : {".png", ".jpg", ".bmp", ".tif", ".webp"}) {
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
  for (const char* const name : {"loops", "pipes"}) fs::create_directories(folder / name);
  for (const char* const name : {"pipe.png", "pipe.avi", "pipe.json", "pipes/a.png"}) {
    ASSERT_EQ(mkfifo((folder / name).c_str(), 0600), 0);
  }
  ASSERT_EQ(mknod((folder / "socket.png").c_str(), S_IFSOCK | 0600, 0), 0);
  fs::create_symlink("b.png", folder / "loops/a.png");
  fs::create_symlink("a.png", folder / "loops/b.png");
  writeFile(folder / "huge.png", "");
  fs::resize_file(folder / "huge.png", 30ULL << 30);  // takes no room on the disk
  writeFile(folder / "wide.pgm", "P5\n# a comment\n30000 30000 255\n");
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
      {track + "f --params gone.json", "gone.json: no such file"},
      {track + "f --job dir.json", "dir.json: cannot be read: it is a folder"},
      {track + "f --job pipe.json", "pipe.json: cannot be read: it is a pipe"},
      {"compare a.json gone.json f", "gone.json: no such file"},
      {track + "pipe.png", "pipe.png: cannot be read: it is a pipe"},
      {track + "pipe.avi", "pipe.avi: cannot be read: it is a pipe"},
      {track + "socket.png", "socket.png: cannot be read: it is a socket"},
      {track + "/dev/zero", "/dev/zero: cannot be read: it is a device"},
      {track + "pipes", "pipes/a.png: cannot be read: it is a pipe"},
      {track + "loops",
       "2 of 2 frames cannot be read; the first one: loops/a.png: cannot be read: Too many levels"},
      {track + "loops/a.png", "loops/a.png: cannot be read: Too many levels"},
      {track + "huge.png", "huge.png: its bytes are more than an image of 200 megapixels has"},
      {track + "wide.pgm", "wide.pgm: 30000x30000 pixels are more than an image of 200 megapixels has"},
      {track + "whole.png --max-megapixels 0.3", "640x480 pixels are more than an image of 0.3 megapixels has"},
      {track + "whole.jpg --max-megapixels 0.3", "640x480 pixels"},
      {track + "whole.bmp --max-megapixels 0.3", "640x480 pixels"},
      {track + "whole.tif --max-megapixels 0.3", "640x480 pixels"},
      {track + "whole.webp --max-megapixels 0.3", "640x480 pixels"},
      {"features gone --type gap", "gone: no such file"},
  };
  expectRefused(3, rows);
}

// Whatever needs the frames goes on with those that can be read, and says at the end that some could not.
TEST_F(ZelweldTest, UnreadableFramesAreRecordedAndCountedAndTheRunGoesOn) {
  simulate("f", "--type gap --frames 4");
  writeFile(folder / "f/frame_0002.png", readFile(folder / "f/frame_0002.png").substr(0, 500));
  ASSERT_EQ(mkfifo((folder / "f/frame_0009.png").c_str(), 0600), 0);
  writeFile(folder / "a.json", R"({"weldType": "gap"})");
  const std::string counted = "2 of 5 frames cannot be read; the first one: f/frame_0002.png: no whole image";
  const std::pair<std::string, std::string> rows[] = {
      {"track f --type gap --format jsonl --explain --rotate 180 --out seen", "\"file\":\"f/frame_0003.png\""},
      {"report f --type gap --out r.html", ""},
      {"identify f --format csv", "f/frame_0003.png"},
      {"exposure f", "f/frame_0003.png"},
      {"features f --type gap", "     3  found"},
      {"compare a.json f --set minGapPx=11 --out c.html", "3 (60.0 %)"},
      {"sweep f --type gap --set minGapPx=5:15:5", "60.0 %"},
  };
  for (const auto& [arguments, text] : rows) {
    const TRun run = zelweld(arguments);
    EXPECT_EQ(run.exitCode, 3) << arguments;
    EXPECT_NE(run.err.find(counted), std::string::npos) << arguments << "\n" << run.err;
    EXPECT_NE(run.out.find(text), std::string::npos) << arguments << "\n" << run.out;
    if (arguments[0] != 't') continue;
    const auto records = recordsOf(run.out);
    ASSERT_EQ(records.size(), 5U);
    EXPECT_EQ(records[2]["found"], false);
    EXPECT_EQ(records[2]["storedX"], records[1]["storedX"]) << "the last seam is held";
    EXPECT_NE(records[2]["trace"]["sentence"].get<std::string>().find("no whole image"), std::string::npos);
    EXPECT_EQ(records[3]["found"], true);
  }
  EXPECT_FALSE(cv::imread((folder / "seen/000003_frame_0003.png").string()).empty());
  EXPECT_FALSE(fs::exists(folder / "seen/000002_frame_0002.png"));
  EXPECT_NE(readFile(folder / "r.html").find("frame_0003.png"), std::string::npos);
}

// Colours, a new line, the one-character form of ESC [ in UTF-8.
TEST_F(ZelweldTest, ControlCharactersOfFileNamesReachNoTerminal) {
  simulate("f", "--type gap --frames 1");
  const std::string name =
      "a\n\033[31m\xc2\x9b"
      "32m.png";
  fs::create_directories(folder / "c");
  fs::copy(folder / "f/frame_0000.png", folder / "c" / name);
  writeFile(folder / "x.json", R"({"weldType": "gap"})");
  fs::rename(folder / "x.json", folder / (name + ".json"));
  const std::string job = "\"$(ls -d a*.json)\"";
  for (const std::string& arguments :
       {std::string("track c --type gap"), std::string("identify c"), std::string("exposure c"),
        std::string("features c --type gap"), "compare " + job + " " + job + " c",
        std::string("track c/*.png --typ gap"), std::string("track c --type gap --out seen"),
        std::string("report c --type gap --out \"$(ls -d c/*)\"")}) {
    const TRun run = zelweld(arguments);
    for (const std::string& text : {run.out, run.err}) {
      EXPECT_EQ(text.find('\033'), std::string::npos) << arguments;
      EXPECT_EQ(text.find("\xc2\x9b"), std::string::npos) << arguments;
    }
    EXPECT_EQ(run.out.find("\n [31m"), std::string::npos) << arguments;
  }
  // Records keep the names; on a terminal, which `script` makes, they do not.
  const std::string csv = "track c --type gap --format csv";
  EXPECT_NE(zelweldOk(csv).out.find(name), std::string::npos);
  const TRun typed = shell("script -qec \"'$Z' " + csv + " 2>/dev/null\" /dev/null </dev/null");
  EXPECT_NE(typed.out.find("[31m"), std::string::npos) << typed.out;
  EXPECT_EQ(typed.out.find('\033'), std::string::npos) << typed.out;
}

TEST_F(ZelweldTest, OutputThatCannotBeWrittenExitsWith1) {
  simulate("f", "--type gap --frames 2");
  writeFile(folder / "file", "in the way");
  writeFile(folder / "page.html.part", "mine");
  expectRefused(1, {{"track f --type gap --out file/seen", "file/seen: no folder"},
                    {"track f --type gap --out no/where", "no/where: no folder"},
                    {"simulate --type gap --out file", "file: no folder"},
                    {"simulate --type gap --out no/where", "no/where: no folder"},
                    {"report f --type gap --out no/r.html", "no/r.html: cannot be written; there is no folder no"},
                    {"sweep f --type gap --set minGapPx=5:9:2 --out no/s.html", "there is no folder no"}});
  EXPECT_FALSE(fs::exists(folder / "no"));
  const TRun run = zelweld("report f --type gap --out page.html");
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_NE(run.err.find("page.html.part: is in the way"), std::string::npos) << run.err;
  EXPECT_EQ(readFile(folder / "page.html.part"), "mine");
  if (!fs::exists("/dev/full")) return;
  writeFile(folder / "a.json", R"({"weldType": "gap"})");
  expectRefused(1, {{"track f --type gap >/dev/full", "takes no more records"},
                    {"params --type gap >/dev/full", "takes no more text"},
                    {"compare a.json a.json f >/dev/full", "standard output takes no more"},
                    {"exposure f >/dev/full", "standard output takes no more"},
                    {"features f --type gap >/dev/full", "standard output takes no more"}});
}
