#include "stripe/break_path.h"

#include <gtest/gtest.h>

#include <vector>

namespace weld {
namespace {

using TPlaces = std::vector<TBreakPlace>;

TEST(BreakPath, addsUpWhatNeighbouringFramesShowAtOnePlace) {
  const struct {
    const char* name;
    std::vector<TPlaces> frames;
    double here;  // at 100
    double elsewhere;
  } rows[] = {
      {"nothing", {}, 0.0, 0.0},
      {"two frames", {{{100, 2, 5}}, {{104, 2, 5}}}, 9.0, 0.0},
      {"too far from frame to frame", {{{91, 2, 5}}, {{100, 2, 5}}}, 5.0, 4.0},
      {"another width", {{{100, 2, 5}}, {{100, 7, 5}}}, 5.0, 0.0},
      {"not seen in between", {{{100, 2, 5}}, {}, {{100, 2, 5}}}, 8.2, 0.0},
      {"forgotten", {{{100, 2, 3}}, {}, {}}, 0.0, 0.0},
      {"a rival", {{{100, 2, 5}, {300, 2, 6}}, {{100, 2, 5}, {700, 2, 4}}}, 9.0, 4.8},
      {"more than are kept",
       {{{900, 1, 9},
         {300, 1, 1},
         {400, 1, 2},
         {500, 1, 3},
         {600, 1, 4},
         {700, 1, 5},
         {800, 1, 6},
         {100, 1, 7},
         {1000, 1, 8}}},
       7.0,
       9.0},
  };
  for (const auto& row : rows) {
    TBreakPlaces places;
    for (const TPlaces& seen : row.frames) places = follow(places, seen);
    const TBreakScore score = scoreAt(places, 100.0F);
    EXPECT_NEAR(score.here, row.here, 1e-5) << row.name;
    EXPECT_NEAR(score.elsewhere, row.elsewhere, 1e-5) << row.name;
    for (int i = 1; i < places.count; ++i) EXPECT_GE(places.all[i - 1].score, places.all[i].score) << row.name;
    EXPECT_TRUE(row.frames.size() != 1 || places.all.back().score == 2.0F) << "the weakest goes";
  }
}

}  // namespace
}  // namespace weld
