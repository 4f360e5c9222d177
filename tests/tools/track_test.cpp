// zelweld track on simulated frames: records, coordinates, inputs and annotated frames.
#include "program.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>

#include <cmath>
#include <tuple>

namespace fs = std::filesystem;

namespace {

constexpr double kMaxSeamErrorPx = 2.0;  // noisy frames, every one of them
constexpr double kMaxStoredErrorPx = 1.0;

std::vector<cv::Point2d> trueSeams(const fs::path& truthFile) {
  std::vector<cv::Point2d> seams;
  const auto lines = linesOf(readFile(truthFile));
  for (std::size_t i = 1; i < lines.size(); ++i) {
    cv::Point2d seam;
    EXPECT_EQ(std::sscanf(lines[i].c_str(), "%*[^,],1,%lf,%lf", &seam.x, &seam.y), 2) << lines[i];
    seams.push_back(seam);
  }
  return seams;
}

std::vector<std::string> namesOf(const TRun& run) {
  std::vector<std::string> names;
  for (const auto& record : recordsOf(run.out))
    names.push_back(fs::path(record["file"].get<std::string>()).filename());
  return names;
}

std::vector<bool> foundOf(const TRun& run) {
  std::vector<bool> found;
  for (const auto& record : recordsOf(run.out)) found.push_back(record["found"]);
  return found;
}

}  // namespace

TEST_F(ZelweldTest, TrackingSimulatedFramesFindsTheTrueSeams) {
  for (const std::string position : {"centre", "left", "right"}) {
    SCOPED_TRACE(position);
    simulate(position, "--type gap --level noisy --frames 8 --seed 5 --drift 1,0.3 --position " + position);
    const TRun run = zelweldOk("track " + position + " --params " + position + "/params.json --format jsonl");
    const auto seams = trueSeams(folder / position / "truth.csv");
    const auto records = recordsOf(run.out);
    ASSERT_EQ(records.size(), 8U);
    ASSERT_EQ(seams.size(), 8U);
    for (std::size_t i = 0; i < records.size(); ++i) {
      ASSERT_TRUE(records[i]["found"]) << i;
      EXPECT_EQ(records[i]["frame"], i);
      const cv::Point2d found(records[i]["x"], records[i]["y"]);
      EXPECT_LE(cv::norm(found - seams[i]), kMaxSeamErrorPx) << i;
    }
    const auto csv =
        linesOf(zelweldOk("track " + position + " --params " + position + "/params.json --format csv").out);
    ASSERT_EQ(csv.size(), 9U);
    EXPECT_EQ(std::count(csv[0].begin(), csv[0].end(), ','), std::count(csv[8].begin(), csv[8].end(), ','));
    EXPECT_NE(run.err.find("frames 8, found 8 (100.0 %), held 0, lost 0, longest loss 0"), std::string::npos)
        << run.err;
  }
}

// The presence check compares with the frame before: without one it never finds anything.
TEST_F(ZelweldTest, PreviousResultIsCarriedWithinASequenceOnly) {
  simulate("a", "--type plain --frames 3");
  simulate("b", "--type plain --frames 1");
  const std::string options = " --type presence --format jsonl";
  EXPECT_EQ(foundOf(zelweldOk("track a" + options)), (std::vector<bool>{false, true, true}));
  EXPECT_EQ(foundOf(zelweldOk("track a --first-only" + options)), (std::vector<bool>{false, false, false}));
  EXPECT_EQ(foundOf(zelweldOk("track a b" + options)), (std::vector<bool>{false, true, true, false}));
  EXPECT_EQ(foundOf(zelweldOk("track a/frame_0000.png b/frame_0000.png" + options)),
            (std::vector<bool>{false, true}));
}

TEST_F(ZelweldTest, TurnedFramesGiveTheSeamInTheStoredImage) {
  simulate("frames", "--type gap --frames 1 --seed 9");
  const cv::Mat upright = cv::imread((folder / "frames/frame_0000.png").string(), cv::IMREAD_GRAYSCALE);
  const cv::Point seam(trueSeams(folder / "frames/truth.csv").front());
  cv::Mat mark = cv::Mat::zeros(upright.size(), CV_8U);
  mark.at<std::uint8_t>(seam) = 1;

  const std::vector<std::pair<int, int>> turns = {// option, how the stored image is turned against it
                                                  {90, cv::ROTATE_90_COUNTERCLOCKWISE},
                                                  {180, cv::ROTATE_180},
                                                  {270, cv::ROTATE_90_CLOCKWISE}};
  for (const auto& [degrees, undo] : turns) {
    SCOPED_TRACE(degrees);
    cv::Mat stored;
    cv::Mat storedMark;
    cv::rotate(upright, stored, undo);
    cv::rotate(mark, storedMark, undo);
    std::vector<cv::Point> truth;
    cv::findNonZero(storedMark, truth);
    cv::imwrite((folder / "turned.png").string(), stored);
    const std::string size = std::to_string(stored.cols - 30) + "," + std::to_string(stored.rows - 20);
    for (const std::string& region : {std::string(), " --roi 13,7," + size}) {
      const TRun run = zelweldOk("track turned.png --type gap --format jsonl --points --rotate " +
                                 std::to_string(degrees) + region);
      const auto record = recordsOf(run.out).front();
      ASSERT_TRUE(record["found"]) << region;
      const cv::Point2d shift(record["storedX"].get<double>() - truth.front().x,
                              record["storedY"].get<double>() - truth.front().y);
      EXPECT_LE(cv::norm(shift), kMaxStoredErrorPx) << region;
      ASSERT_EQ(record["stripePts"].size(), record["points"].get<std::size_t>());
      ASSERT_EQ(record["storedStripePts"].size(), record["points"].get<std::size_t>());
      // A point beside the seam is turned with it.
      const auto between = [](const nlohmann::json& point, const nlohmann::json& x, const nlohmann::json& y) {
        return cv::norm(cv::Point2d(point[0], point[1]) - cv::Point2d(x, y));
      };
      EXPECT_NEAR(between(record["storedStripePts"][0], record["storedX"], record["storedY"]),
                  between(record["stripePts"][0], record["x"], record["y"]), 0.01);
    }
  }
}

TEST_F(ZelweldTest, ChannelsPickTheStripeOutOfColourFrames) {
  simulate("frames", "--type gap --frames 1");
  const cv::Mat stripe = cv::imread((folder / "frames/frame_0000.png").string(), cv::IMREAD_GRAYSCALE);
  const cv::Mat sunlit(stripe.size(), CV_8U, cv::Scalar(120));
  cv::Mat reddened;
  cv::addWeighted(sunlit, 1.0, stripe, 0.6, 0.0, reddened);
  const auto save = [&](const std::string& name, const std::vector<cv::Mat>& channels) {
    cv::Mat colour;
    cv::merge(channels, colour);
    cv::imwrite((folder / name).string(), colour);
  };
  const cv::Mat dark = cv::Mat::zeros(stripe.size(), CV_8U);
  save("dark.png", {dark, dark, stripe});
  save("green.png", {dark, stripe, dark});
  save("blue.png", {stripe, dark, dark});
  save("day.png", {sunlit, sunlit, reddened});
  const std::tuple<std::string, std::string, bool> rows[] = {
      {"dark.png", "red", true},      {"dark.png", "green", false},      {"green.png", "green", true},
      {"blue.png", "blue", true},     {"blue.png", "red-excess", false}, {"day.png", "green", false},
      {"day.png", "red-excess", true}};
  for (const auto& [file, channel, isFound] : rows) {
    const TRun run = zelweldOk("track " + file + " --type gap --format jsonl --channel " + channel);
    EXPECT_EQ(foundOf(run), std::vector<bool>{isFound}) << file << " " << channel;
  }
}

TEST_F(ZelweldTest, FoldersAndPatternsAreReadInCountingOrder) {
  simulate("frames", "--type gap --frames 1");
  fs::create_directories(folder / "d");
  for (const std::string name : {"img1", "img10", "img2", "img02", "other"}) {
    fs::copy(folder / "frames/frame_0000.png", folder / "d" / (name + ".png"));
  }
  writeFile(folder / "d/notes.txt", "no image");
  const std::string options = " --type gap --format jsonl";
  using TNames = std::vector<std::string>;
  EXPECT_EQ(namesOf(zelweldOk("track d" + options)),
            (TNames{"img1.png", "img02.png", "img2.png", "img10.png", "other.png"}));
  EXPECT_EQ(namesOf(zelweldOk("track d/img%d.png" + options)), (TNames{"img1.png", "img2.png", "img10.png"}));
  EXPECT_EQ(namesOf(zelweldOk("track d/img%02d.png" + options)), (TNames{"img02.png", "img10.png"}));
}

TEST_F(ZelweldTest, VideosAreReadFrameByFrame) {
  simulate("frames", "--type gap --frames 6");
  const std::string path = (folder / "clip.avi").string();
  {
    cv::VideoWriter video(path, cv::CAP_OPENCV_MJPEG, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), 25.0,
                          cv::Size(640, 480));
    ASSERT_TRUE(video.isOpened());
    for (int n = 0; n < 6; ++n) {
      video.write(cv::imread((folder / ("frames/frame_000" + std::to_string(n) + ".png")).string()));
    }
  }
  const TRun whole = zelweldOk("track clip.avi --type gap --format jsonl");
  EXPECT_EQ(foundOf(whole), std::vector<bool>(6, true));
  EXPECT_EQ(namesOf(whole).back(), "clip.avi#5");

  const std::string bytes = readFile(path);
  writeFile(folder / "cut.avi", bytes.substr(0, bytes.size() / 2));
  const TRun cut = zelweld("track cut.avi --type gap --format jsonl");
  EXPECT_EQ(cut.exitCode, 3);
  EXPECT_NE(cut.err.find("cut.avi: "), std::string::npos);
  EXPECT_EQ(linesOf(cut.err).size(), 1U) << cut.err;
}

TEST_F(ZelweldTest, AnnotatedFramesShowStripeSeamAndText) {
  simulate("frames", "--type gap --frames 2");
  zelweldOk("track frames --type gap --out seen/here");
  const cv::Mat before = cv::imread((folder / "frames/frame_0001.png").string());
  const cv::Mat after = cv::imread((folder / "seen/here/000001_frame_0001.png").string());
  ASSERT_EQ(after.size(), before.size());
  cv::Mat coloured;
  cv::inRange(after, cv::Scalar(60, 40, 230), cv::Scalar(100, 80, 255), coloured);  // the red of the seam cross
  const cv::Point seam(trueSeams(folder / "frames/truth.csv")[1]);
  const cv::Rect around = cv::Rect(seam - cv::Point(30, 30), cv::Size(61, 61)) & cv::Rect({0, 0}, before.size());
  EXPECT_GT(cv::countNonZero(coloured(around)), 20);
  cv::Mat label;
  cv::cvtColor(after(cv::Rect(0, 0, 200, 60)), label, cv::COLOR_BGR2GRAY);
  EXPECT_GT(cv::countNonZero(label > 150), 100);
}
