// zelweld track on simulated frames: records, coordinates, inputs and annotated frames.
#include "program.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>

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

cv::Point2d pointOf(const nlohmann::json& x, const nlohmann::json& y) {
  return {x.get<double>(), y.get<double>()};
}

std::vector<bool> foundOf(const std::vector<nlohmann::json>& records) {
  return fieldOf<bool>(records, "found");
}

using TFlags = std::vector<bool>;
using TNames = std::vector<std::string>;

}  // namespace

class TrackTest : public ZelweldTest {
protected:
  // One gap, frames/frame_0000.png.
  cv::Mat drawFrame() const {
    simulate("frames", "--type gap --frames 1 --seed 9");
    return cv::imread((folder / "frames/frame_0000.png").string(), cv::IMREAD_GRAYSCALE);
  }
};

TEST_F(TrackTest, SimulatedFramesGiveTheTrueSeamsInEveryFormat) {
  for (const std::string position : {"centre", "left", "right"}) {
    SCOPED_TRACE(position);
    simulate(position, "--type gap --level noisy --frames 8 --seed 5 --drift 1,0.3 --position " + position);
    const std::string arguments = position + " --params " + position + "/params.json ";
    const auto seams = trueSeams(folder / position / "truth.csv");
    const auto records = track(arguments);
    ASSERT_EQ(records.size(), 8U);
    ASSERT_EQ(seams.size(), 8U);
    for (std::size_t i = 0; i < records.size(); ++i) {
      ASSERT_EQ(records[i]["state"], "found") << i;
      EXPECT_EQ(records[i]["frame"], i);
      EXPECT_LE(cv::norm(pointOf(records[i]["x"], records[i]["y"]) - seams[i]), kMaxSeamErrorPx) << i;
      const auto& measured = records[i]["measured"];
      EXPECT_NEAR(measured["rightEdge.x"].get<double>() - measured["leftEdge.x"].get<double>(),
                  measured["gapPx"].get<double>(), 1.0);
      EXPECT_TRUE(measured["depthPx"].is_null());
    }
    const TRun run = zelweldOk("track --format csv " + arguments);
    EXPECT_EQ(linesOf(run.out).size(), 9U);
    const std::string heading = linesOf(run.out).front();
    EXPECT_NE(heading.find(",ms,state,confidence,gapPx,"), std::string::npos) << heading;
    EXPECT_NE(heading.find(",leftEdge.x,leftEdge.y,leftEdge.sigmaPx,rightEdge.x,"), std::string::npos) << heading;
    for (const std::string& line : linesOf(run.out))
      EXPECT_EQ(std::count(line.begin(), line.end(), ','), std::count(heading.begin(), heading.end(), ','))
          << line;
    EXPECT_EQ(run.err.rfind("frames 8, found 8 (100.0 %), held 0, lost 0, longest loss 0", 0), 0U) << run.err;
  }
}

// The presence check compares with the frame before: without one it never finds anything.
TEST_F(TrackTest, PreviousResultIsCarriedWithinASequenceOnly) {
  simulate("a", "--type plain --frames 3");
  simulate("b", "--type plain --frames 1");
  const std::pair<const char*, TFlags> rows[] = {{"a", {false, true, true}},
                                                 {"a --first-only", {false, false, false}},
                                                 {"a b", {false, true, true, false}},
                                                 {"a/frame_0000.png b/frame_0000.png", {false, true}}};
  for (const auto& [inputs, found] : rows) {
    EXPECT_EQ(foundOf(track(std::string("--type presence ") + inputs)), found) << inputs;
  }
}

TEST_F(TrackTest, TurnedAndCutFramesGiveSeamAndStripeInTheStoredImage) {
  const cv::Mat upright = drawFrame();
  const cv::Point2d seam = trueSeams(folder / "frames/truth.csv").front();
  const cv::Point2d last(upright.cols - 1.0, upright.rows - 1.0);
  const std::tuple<std::string, int, cv::Point2d> rows[] = {
      // option, how the stored image is turned against it, where the seam is there
      {"90", cv::ROTATE_90_COUNTERCLOCKWISE, {seam.y, last.x - seam.x}},
      {"180", cv::ROTATE_180, last - seam},
      {"270", cv::ROTATE_90_CLOCKWISE, {last.y - seam.y, seam.x}}};
  for (const auto& [degrees, undo, truth] : rows) {
    cv::Mat stored;
    cv::rotate(upright, stored, undo);
    cv::imwrite((folder / "turned.png").string(), stored);
    const std::string size = std::to_string(stored.cols - 30) + "," + std::to_string(stored.rows - 20);
    for (const std::string& region : {std::string(), " --roi 13,7," + size}) {
      SCOPED_TRACE(degrees + region);
      const auto record = track("turned.png --type gap --points --rotate " + degrees + region).front();
      ASSERT_TRUE(record["found"]);
      const cv::Point2d found = pointOf(record["storedX"], record["storedY"]);
      EXPECT_LE(cv::norm(found - truth), kMaxStoredErrorPx);
      const auto& points = record["stripePts"];
      const auto& storedPoints = record["storedStripePts"];
      ASSERT_EQ(points.size(), record["points"].get<std::size_t>());
      ASSERT_EQ(storedPoints.size(), points.size());
      EXPECT_NEAR(cv::norm(pointOf(storedPoints[0][0], storedPoints[0][1]) - found),
                  cv::norm(pointOf(points[0][0], points[0][1]) - pointOf(record["x"], record["y"])), 0.01);
    }
  }
}

TEST_F(TrackTest, ChannelsPickTheStripeOutOfColourFrames) {
  const cv::Mat stripe = drawFrame();
  const cv::Mat dark = cv::Mat::zeros(stripe.size(), CV_8U);
  const cv::Mat sunlit(stripe.size(), CV_8U, cv::Scalar(120));
  cv::Mat reddened;
  cv::addWeighted(sunlit, 1.0, stripe, 0.6, 0.0, reddened);
  const std::tuple<std::vector<cv::Mat>, std::string, bool> rows[] = {
      {{dark, dark, stripe}, "red", true},
      {{dark, dark, stripe}, "green", false},
      {{dark, stripe, dark}, "green", true},
      {{stripe, dark, dark}, "blue", true},
      {{stripe, dark, dark}, "red-excess", false},
      {{sunlit, sunlit, reddened}, "green", false},
      {{sunlit, sunlit, reddened}, "red-excess", true}};
  for (const auto& [channels, channel, isFound] : rows) {
    cv::Mat colour;
    cv::merge(channels, colour);
    cv::imwrite((folder / "c.png").string(), colour);
    EXPECT_EQ(foundOf(track("c.png --type gap --channel " + channel)), TFlags{isFound}) << channel;
  }
}

TEST_F(TrackTest, FoldersAndPatternsAreReadInCountingOrder) {
  drawFrame();
  fs::create_directories(folder / "d");
  for (const char* const name : {"1.png", "10.png", "2.png", "02.png", "a.png"}) {
    fs::copy(folder / "frames/frame_0000.png", folder / "d" / name);
  }
  writeFile(folder / "d/notes.txt", "no image");
  const std::pair<const char*, TNames> rows[] = {{"d", {"d/1.png", "d/02.png", "d/2.png", "d/10.png", "d/a.png"}},
                                                 {"d/%d.png", {"d/1.png", "d/2.png", "d/10.png"}},
                                                 {"d/%02d.png", {"d/02.png", "d/10.png"}}};
  for (const auto& [input, files] : rows) {
    EXPECT_EQ(fieldOf<std::string>(track(std::string("--type gap ") + input), "file"), files);
  }
}

TEST_F(TrackTest, VideosAreReadFrameByFrame) {
  cv::Mat frame;
  cv::cvtColor(drawFrame(), frame, cv::COLOR_GRAY2BGR);
  const fs::path path = folder / "clip.avi";
  {
    cv::VideoWriter video(path, cv::CAP_OPENCV_MJPEG, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), 25.0,
                          frame.size());
    ASSERT_TRUE(video.isOpened());
    for (int n = 0; n < 6; ++n) video.write(frame);
  }
  const auto records = track("clip.avi --type gap");
  EXPECT_EQ(foundOf(records), TFlags(6, true));
  EXPECT_EQ(records.back()["file"], "clip.avi#5");
  const std::string bytes = readFile(path);
  writeFile(folder / "cut.avi", bytes.substr(0, bytes.size() / 2));
  const TRun cut = zelweld("track cut.avi --type gap");
  EXPECT_EQ(cut.exitCode, 3);
  EXPECT_NE(cut.err.find("cannot be read; the first one: cut.avi: the video is cut off"), std::string::npos)
      << cut.err;
}

TEST_F(TrackTest, AnnotatedFramesShowStripeSeamAndText) {
  const cv::Mat before = drawFrame();
  zelweldOk("track frames --type gap --out seen");
  const cv::Mat after = cv::imread((folder / "seen/000000_frame_0000.png").string());
  ASSERT_EQ(after.size(), before.size());
  cv::Mat coloured;
  cv::inRange(after, cv::Scalar(60, 40, 230), cv::Scalar(100, 80, 255), coloured);  // the red of the seam cross
  const cv::Point seam(trueSeams(folder / "frames/truth.csv").front());
  const cv::Rect around = cv::Rect(seam - cv::Point(30, 30), cv::Size(61, 61)) & cv::Rect({0, 0}, before.size());
  EXPECT_GT(cv::countNonZero(coloured(around)), 20);
  cv::Mat label;
  cv::cvtColor(after(cv::Rect(0, 0, 200, 60)), label, cv::COLOR_BGR2GRAY);
  EXPECT_GT(cv::countNonZero(label > 150), 100);
}
