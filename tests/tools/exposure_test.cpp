// zelweld exposure on frames whose figures are known.
#include "program.h"

#include <opencv2/imgcodecs.hpp>

#include <regex>

namespace {

class ExposureTest : public ZelweldTest {
protected:
  void SetUp() override {
    ZelweldTest::SetUp();
    for (const auto& [name, grey] :
         {std::pair{"1_dark.png", 5}, {"2_suits.png", 48}, {"3_bright.png", 100}, {"4_saturated.png", 255}}) {
      cv::imwrite((folder / name).string(), cv::Mat(100, 200, CV_8UC3, cv::Scalar::all(grey)));
    }
  }

  // Frame number, mean, bright pixels, advice and file of each line, single blanks between them.
  std::vector<std::string> figures(const std::string& options) const {
    auto lines = linesOf(zelweldOk("exposure . " + options).out);
    for (std::string& line : lines) {
      line = std::regex_replace(std::regex_replace(line, std::regex(" +"), " "), std::regex("^ "), "");
    }
    return lines;
  }
};

using Lines = std::vector<std::string>;

}  // namespace

TEST_F(ExposureTest, EachFrameGetsItsFiguresAndAnAdvice) {
  EXPECT_EQ(figures(""),
            (Lines{"frame mean bright saturated peak advice file", "0 5 0 - - raise x 4.00 ./1_dark.png",
                   "1 48 0 - - leave ./2_suits.png", "2 100 0 - - lower x 0.40 ./3_bright.png",
                   "3 76 3999 - - lower x 0.50 ./4_saturated.png"}));
  EXPECT_EQ(figures("--target-mean 96 --tolerance 4")[2], "1 48 0 - - raise x 2.00 ./2_suits.png");
}

// A stripe of 9 px in the dark: the mean of the frame knows nothing of it.
TEST_F(ExposureTest, AStripeIsJudgedByItsOwnLight) {
  const std::pair<int, const char*> rows[] = {
      {255, " 100.0 245 lower x 0.50 "}, {20, " 0.0 10 raise x 4.00 "}, {150, " 0.0 140 leave "}};
  for (const auto& [grey, text] : rows) {
    std::filesystem::remove_all(folder / "s");
    std::filesystem::create_directory(folder / "s");
    cv::Mat image(400, 600, CV_8U, cv::Scalar(10));
    image.rowRange(200, 209).setTo(grey);
    cv::imwrite((folder / "s/1.png").string(), image);
    const std::string line = std::regex_replace(linesOf(zelweldOk("exposure s").out)[1], std::regex(" +"), " ");
    EXPECT_NE(line.find(text), std::string::npos) << line;
  }
}
