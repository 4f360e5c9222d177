#include "plain_extraction.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace weld::plain {
namespace {

struct TEdge {
  int position;
  int strength;
};

std::vector<TStripeEdge> makeEdges(const std::vector<TEdge>& edges, TEdgeKind kind) {
  std::vector<TStripeEdge> made;
  for (const TEdge& edge : edges) made.push_back({edge.position, edge.strength, kind});
  return made;
}

TEST(PairStripeEdges, GivesStatusAndPairs) {
  const struct {
    const char* name;
    std::vector<TEdge> rising, falling;
    int status;
    std::vector<std::pair<int, int>> pairs;  // low, high
  } rows[] = {
      {"no edges", {}, {}, 1, {}},
      {"no rising edge", {}, {{20, 200}}, 1, {}},
      {"no falling edge", {{20, 200}}, {}, 1, {}},
      {"2 px apart", {{20, 200}}, {{22, 200}}, 2, {}},
      {"3 px apart", {{20, 200}}, {{23, 200}}, 0, {{20, 23}}},
      {"99 px apart", {{20, 200}}, {{119, 200}}, 0, {{20, 119}}},
      {"100 px apart", {{20, 200}}, {{120, 200}}, 2, {}},
      {"falling before rising", {{30, 200}}, {{20, 200}}, 2, {}},
      {"second rising edge takes the pair", {{20, 900}, {30, 200}}, {{40, 200}}, 0, {{30, 40}}},
      {"two stripes", {{20, 200}, {60, 200}}, {{30, 200}, {70, 200}}, 0, {{20, 30}, {60, 70}}},
      {"weakest of six is dropped",
       {{20, 300}, {40, 200}, {60, 300}, {80, 300}, {100, 300}, {120, 300}},
       {{50, 200}, {130, 200}},
       0,
       {{20, 50}, {120, 130}}},
      {"of equal strength the earlier stay",
       {{20, 200}, {40, 200}, {60, 200}, {80, 200}, {100, 200}, {120, 200}},
       {{110, 200}, {130, 200}},
       0,
       {{100, 110}}},
      {"five all stay",
       {{20, 200}, {40, 1}, {60, 200}, {80, 200}, {100, 200}},
       {{50, 200}, {110, 200}},
       0,
       {{40, 50}, {100, 110}}},
  };
  const cv::Mat line(1, 200, CV_8UC1, cv::Scalar(100));
  for (const auto& row : rows) {
    std::vector<TStripePair> pairs;
    const int status =
        pairStripeEdges(line, makeEdges(row.rising, kRising), makeEdges(row.falling, kFalling), pairs);
    EXPECT_EQ(status, row.status) << row.name;
    std::vector<std::pair<int, int>> found;
    for (const TStripePair& pair : pairs) found.emplace_back(pair.low, pair.high);
    EXPECT_EQ(found, row.pairs) << row.name;
  }
}

TEST(StripeCentroid, SumsFromLowUpToButWithoutHighAndTheLastPosition) {
  const cv::Mat line = (cv::Mat_<uchar>(1, 6) << 10, 0, 0, 30, 90, 255);
  const struct {
    int low, high;
    double centroid;
  } rows[] = {
      {0, 4, 90.0 / 40.0}, {-7, 4, 90.0 / 40.0}, {3, 5, 450.0 / 120.0}, {3, 100, 450.0 / 120.0}, {1, 3, -1.0}};
  for (const auto& row : rows) EXPECT_DOUBLE_EQ(stripeCentroid(line, row.low, row.high), row.centroid) << row.low;
}

}  // namespace
}  // namespace weld::plain
