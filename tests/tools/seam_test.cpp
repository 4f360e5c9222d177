// zelweld seam, and zelweld track by contrast, on simulated plates.
#include "program.h"

#include <cmath>
#include <sstream>

namespace fs = std::filesystem;

// The place of the seam in truth.csv: file, hasSeam, x, y.
cv::Point2d trueSeam(const fs::path& file, std::size_t frame) {
  std::istringstream row(linesOf(readFile(file))[frame + 1]);
  std::string field[4];
  for (std::string& f : field) std::getline(row, f, ',');
  return {std::stod(field[2]), std::stod(field[3])};
}

TEST_F(ZelweldTest, SeamFindsThePlatesSeamInEveryFormatAndDrawsIt) {
  simulate("p", "--plate gap --level noisy --frames 2 --seed 4 --drift 3,0");
  simulate("bare", "--plate none --frames 1");
  const auto records = recordsOf(zelweldOk("seam p bare --polarity dark --out drawn").out);
  ASSERT_EQ(records.size(), 3U);
  EXPECT_FALSE(records[2]["found"].get<bool>());
  for (const std::size_t n : {0U, 1U}) {
    ASSERT_TRUE(records[n]["found"].get<bool>());
    const auto& points = records[n]["points"];
    EXPECT_EQ(points.size(), records[n]["measured"].size());
    double least = 1e9;
    for (const auto& p : points)
      least = std::min(least, cv::norm(cv::Point2d(p[0], p[1]) - trueSeam(folder / "p/truth.csv", n)));
    EXPECT_LT(least, 6.0) << "points are 8 px apart";
    EXPECT_TRUE(fs::exists(folder / ("drawn/seam_000" + std::to_string(n) + ".png")));
  }
  EXPECT_EQ(linesOf(zelweldOk("seam p --polarity dark --format csv").out).size(),
            1 + records[0]["points"].size() + records[1]["points"].size());
  EXPECT_NE(zelweldOk("seam p bare --format table").out.find("bare/frame_0000.png: no seam"), std::string::npos);
  const auto tracked = recordsOf(zelweldOk("track p --source contrast --polarity dark --format jsonl").out);
  EXPECT_EQ(fieldOf<bool>(tracked, "found"), std::vector<bool>({true, true}));
  EXPECT_NEAR(tracked[0]["trackVal"].get<double>(), 1.0, 0.1);
}
