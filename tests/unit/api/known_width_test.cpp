#include "api/known_width.h"

#include <gtest/gtest.h>

#include <vector>

namespace weld {
namespace {

TEST(KnownWidth, holdsTheEndsThatTheFramesBeforeShowed) {
  const TEndColumns plate{400, 700};
  const struct {
    const char* name;
    std::vector<TEndColumns> frames;
    TEndColumns kept;  // of the last one
  } rows[] = {
      {"one frame knows nothing", {plate, {400, 640}}, {400, 640}},
      {"right end lost", {plate, plate, {401, 640}}, {401, 701}},
      {"left end lost", {plate, plate, plate, {450, 702}}, {402, 702}},
      {"scatter", {plate, plate, {403, 700}}, {403, 700}},
      {"both ends elsewhere", {plate, plate, plate, {300, 500}}, {300, 500, false}},
      {"lasting change", {plate, plate, {400, 640}, {400, 640}, {400, 640}}, {400, 640}},
      {"moves along", {plate, {405, 705}, {410, 710}, {415, 660}}, {415, 715}},
  };
  for (const auto& row : rows) {
    TBreakPlaces places;
    TEndColumns kept;
    for (const TEndColumns& seen : row.frames) kept = keepWidth(seen, places);
    EXPECT_NEAR(kept.left, row.kept.left, 1.0) << row.name;
    EXPECT_NEAR(kept.right, row.kept.right, 1.0) << row.name;
    EXPECT_EQ(kept.areKnown, row.kept.areKnown) << row.name;
  }
}

}  // namespace
}  // namespace weld
