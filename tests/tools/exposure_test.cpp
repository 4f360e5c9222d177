// zelweld exposure and zelweld features on frames whose figures are known.
#include "program.h"
#include "tools/cli_error.h"
#include "tools/gbk_text.h"

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
  EXPECT_EQ(figures(""), (Lines{"frame mean bright advice file", "0 5 0 raise x 4.00 ./1_dark.png",
                                "1 48 0 leave ./2_suits.png", "2 100 0 lower x 0.40 ./3_bright.png",
                                "3 76 3999 lower x 0.50 ./4_saturated.png"}));
  EXPECT_EQ(figures("--target-mean 96 --tolerance 4")[2], "1 48 0 raise x 2.00 ./2_suits.png");
}

TEST_F(ExposureTest, FeaturesPrintsTheReportInUtf8) {
  const std::regex report(
      "\\./[^ ]+\\.png: 焊缝参数:leftAg:0\\.000，rightAg:0\\.000, intersecAg:0\\.000, haveGap:0, "
      "center:0\\.000, 0\\.000, score:0\\.000, costTime:[0-9]+");
  const Lines lines = linesOf(zelweldOk("features .").out);
  ASSERT_EQ(lines.size(), 4U);
  for (const std::string& line : lines) {
    EXPECT_TRUE(std::regex_match(line, report)) << line;
  }
}

TEST(Utf8FromGbk, ConvertsWholeCharactersAndRefusesBrokenOnes) {
  EXPECT_EQ(tool::utf8FromGbk(""), "");
  EXPECT_EQ(tool::utf8FromGbk("a\xBA\xB8z"), "a焊z");
  EXPECT_THROW(tool::utf8FromGbk("a\xBA"), tool::TCliError);
  EXPECT_THROW(tool::utf8FromGbk("\xFF\xFF"), tool::TCliError);
}
