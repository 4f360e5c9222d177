// The parts of the search by contrast: kernels, field, and the choice of the stretch.
#include "contrast/log_field.h"
#include "contrast/stretch.h"
#include "scenes/random.h"
#include "support/kernels/kernels.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

namespace {

using weld::TContrastRows;

class ContrastKernels : public testing::TestWithParam<int> {};

// What every row kernel makes of random sums.
std::vector<short> runAll(const TContrastRows& rows, int columns) {
  scenes::TRandom random(static_cast<std::uint64_t>(columns), scenes::TStream::noise);
  std::array<std::vector<short>, 8> in;
  for (std::vector<short>& row : in) {
    row.resize(static_cast<std::size_t>(columns) + 16);
    for (short& v : row) v = static_cast<short>(random.integer(0, 1600));
  }
  const short* pointers[8];
  for (int i = 0; i < 8; ++i) pointers[i] = in[static_cast<std::size_t>(i)].data() + 8;
  std::vector<short> out;
  std::vector<short> row(static_cast<std::size_t>(columns) + 16, 0);
  const auto keep = [&] { out.insert(out.end(), row.begin(), row.begin() + columns); };
  rows.sumEight(pointers, columns, row.data());
  keep();
  const std::vector<short> sums = row;
  rows.meanOfTwo(sums.data(), 3, columns, row.data());
  keep();
  rows.respondDark(pointers[0], pointers[1], pointers[2], columns, row.data());
  keep();
  const std::vector<short> dark = row;
  rows.respondBright(pointers[0], pointers[1], pointers[2], columns, row.data());
  keep();
  rows.respondEdge(pointers, columns, row.data());
  keep();
  std::vector<unsigned short> factors;
  for (int x = 0; x < columns; ++x) factors.push_back(static_cast<unsigned short>(21845 + 97 * x));
  rows.rate(dark.data(), factors.data(), 56, columns, row.data());
  keep();
  const std::vector<short> evidence = row;
  rows.advance({pointers[3], pointers[4], nullptr}, evidence.data(), {11, 4, 8}, columns, row.data());
  keep();
  out.push_back(static_cast<short>(rows.highest(dark.data(), columns)));
  out.push_back(static_cast<short>(rows.sumMagnitudes(dark.data(), columns) % 30000));
  return out;
}

TEST_P(ContrastKernels, giveTheSameOnEveryInstructionSet) {
  EXPECT_EQ(runAll(weld::kBaselineKernels.contrastRows, GetParam()),
            runAll(weld::kernels().contrastRows, GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Widths, ContrastKernels, testing::Values(16, 17, 33, 640));

TEST(ContrastField, logarithmsOfBothViewsAreTheSamePixels) {
  cv::Mat1b image(70, 90);
  scenes::TRandom random(5, scenes::TStream::noise);
  for (unsigned char& v : image) v = static_cast<unsigned char>(random.integer(0, 255));
  const weld::TGreyView upright = weld::viewAlong(image, false);
  const weld::TGreyView flat = weld::viewAlong(image, true);
  const weld::TLogField rows(upright, {0, upright.along}, weld::heapMemory());
  const weld::TLogField columns(flat, {0, flat.along}, weld::heapMemory());
  ASSERT_EQ(rows.rows, 35);
  ASSERT_EQ(columns.rows, 45);
  for (int y = 0; y < 35; ++y) {
    for (int x = 0; x < 45; ++x) ASSERT_EQ(rows.row(y)[x], columns.row(x)[y]) << x << " " << y;
  }
  const double mean = (image(20, 30) + image(21, 30) + image(20, 31) + image(21, 31)) / 4.0;
  EXPECT_NEAR(rows.row(10)[15], weld::kLogUnit * std::log(1.0 + mean / weld::kDarkGrey), 0.51);
  // A band that leaves the image repeats its border.
  const weld::TLogField band(upright, {0, upright.along, 35.0, 0.0, 0.0, 20}, weld::heapMemory());
  EXPECT_EQ(band.row(7)[0], rows.row(7)[0]);
  EXPECT_EQ(band.row(7)[10 + 4], rows.row(7)[4]);
}

TEST(ContrastStretch, goesOnBehindATackWeldButNotOffToAScratch) {
  struct TRow {
    const char* name;
    float turn;    // px per station behind the gap
    float missPx;  // aside, at once
    int gap;       // stations
    int end;
  };
  for (const TRow& row : {TRow{"straight on", 0.0F, 0.0F, 8, 60}, TRow{"a little aside", 0.0F, 6.0F, 8, 60},
                          TRow{"far aside", 0.0F, 25.0F, 8, 40}, TRow{"turned off", 6.0F, 0.0F, 8, 40},
                          TRow{"too far away", 0.0F, 0.0F, 60, 40}}) {
    weld::TList<float> places;
    weld::TList<std::uint8_t> measured;
    for (int i = 0; i < 40 + row.gap + 12; ++i) {
      const bool isBehind = i >= 40 + row.gap;
      places.push_back(isBehind ? row.missPx + row.turn * static_cast<float>(i - 40 - row.gap) : 0.0F);
      measured.push_back(i < 40 || isBehind ? 1 : 0);
    }
    const weld::TStretch stretch = weld::findStretch(places, measured, weld::heapMemory());
    EXPECT_EQ(stretch.begin, 0) << row.name;
    EXPECT_EQ(stretch.end, row.end) << row.name;
  }
}

}  // namespace
