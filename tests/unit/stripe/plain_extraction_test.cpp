#include "plain_extraction.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace weld::plain {
namespace {

constexpr int kLength = 200;

struct TEdge {
  int position;
  int strength;
};

std::vector<TStripeEdge> makeEdges(const std::vector<TEdge>& edges, TEdgeKind kind) {
  std::vector<TStripeEdge> made;
  for (const TEdge& edge : edges) made.push_back({edge.position, edge.strength, kind});
  return made;
}

struct TPairCase {
  std::string name;
  std::vector<TEdge> rising;
  std::vector<TEdge> falling;
  int status;
  std::vector<std::pair<int, int>> expected;  // low, high
};

void PrintTo(const TPairCase& c, std::ostream* out) {
  *out << c.name;
}

class PairStripeEdges : public testing::TestWithParam<TPairCase> {};

TEST_P(PairStripeEdges, GivesStatusAndPairs) {
  const cv::Mat line(1, kLength, CV_8UC1, cv::Scalar(100));
  std::vector<TStripePair> pairs;
  const int status =
      pairStripeEdges(line, makeEdges(GetParam().rising, kRising), makeEdges(GetParam().falling, kFalling), pairs);
  EXPECT_EQ(status, GetParam().status);
  std::vector<std::pair<int, int>> found;
  for (const TStripePair& pair : pairs) found.emplace_back(pair.low, pair.high);
  EXPECT_EQ(found, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, PairStripeEdges,
    testing::Values(
        TPairCase{"no_edges", {}, {}, 1, {}},  //
        TPairCase{"no_rising_edge", {}, {{20, 200}}, 1, {}}, TPairCase{"no_falling_edge", {{20, 200}}, {}, 1, {}},
        TPairCase{"2_px_apart", {{20, 200}}, {{22, 200}}, 2, {}},
        TPairCase{"3_px_apart", {{20, 200}}, {{23, 200}}, 0, {{20, 23}}},
        TPairCase{"99_px_apart", {{20, 200}}, {{119, 200}}, 0, {{20, 119}}},
        TPairCase{"100_px_apart", {{20, 200}}, {{120, 200}}, 2, {}},
        TPairCase{"falling_before_rising", {{30, 200}}, {{20, 200}}, 2, {}},
        TPairCase{"second_rising_edge_takes_the_pair", {{20, 900}, {30, 200}}, {{40, 200}}, 0, {{30, 40}}},
        TPairCase{"two_stripes", {{20, 200}, {60, 200}}, {{30, 200}, {70, 200}}, 0, {{20, 30}, {60, 70}}},
        TPairCase{"sixth_edge_is_dropped_when_weakest",
                  {{20, 300}, {40, 200}, {60, 300}, {80, 300}, {100, 300}, {120, 300}},
                  {{50, 200}, {130, 200}},
                  0,
                  {{20, 50}, {120, 130}}},
        TPairCase{"of_equal_strength_the_earlier_stay",
                  {{20, 200}, {40, 200}, {60, 200}, {80, 200}, {100, 200}, {120, 200}},
                  {{110, 200}, {130, 200}},
                  0,
                  {{100, 110}}},
        TPairCase{"five_edges_all_stay",
                  {{20, 200}, {40, 1}, {60, 200}, {80, 200}, {100, 200}},
                  {{50, 200}, {110, 200}},
                  0,
                  {{40, 50}, {100, 110}}}),
    [](const auto& testInfo) { return testInfo.param.name; });

TEST(PairStripeEdges, CentreBetweenTwoRowsGoesToTheEvenOne) {
  // Two equal values: the centre lies halfway between them.
  for (const auto& [first, expected] : {std::pair{20, 20}, std::pair{21, 22}}) {
    cv::Mat line = cv::Mat::zeros(1, kLength, CV_8UC1);
    line.colRange(first, first + 2).setTo(50);
    std::vector<TStripePair> pairs;
    pairStripeEdges(line, {{first, 1, kRising}}, {{first + 4, 1, kFalling}}, pairs);
    EXPECT_EQ(pairs.at(0).centre, expected);
  }
}

TEST(StripeCentroid, SumsFromLowUpToButWithoutHighAndTheLastPosition) {
  const cv::Mat line = (cv::Mat_<uchar>(1, 6) << 10, 0, 0, 30, 90, 255);
  EXPECT_DOUBLE_EQ(stripeCentroid(line, 0, 4), 90.0 / 40.0);
  EXPECT_DOUBLE_EQ(stripeCentroid(line, -7, 4), 90.0 / 40.0);
  EXPECT_DOUBLE_EQ(stripeCentroid(line, 3, 5), 450.0 / 120.0);
  EXPECT_DOUBLE_EQ(stripeCentroid(line, 3, 100), 450.0 / 120.0);
  EXPECT_DOUBLE_EQ(stripeCentroid(line, 1, 3), -1.0);
}

}  // namespace
}  // namespace weld::plain
