#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

const cv::Point2f kAnyPos{7.0F, 7.0F};
constexpr int kLo = 10;
constexpr int kHi = 20;

class TOpenWeld : public TBaseWeld {
public:
  using TBaseWeld::getSamplinePointsStatus;
  using TBaseWeld::isWeldPosContinueMissingPts;
  using TBaseWeld::isWeldPosMissingPts;
  using TBaseWeld::setSamplinePointsStatus;
};

TOpenWeld weldWith(const std::vector<TWeldPointStatus>& status) {
  TOpenWeld weld;
  weld.setSamplinePointsStatus(status);
  return weld;
}

std::vector<int> positionsOf(const TOpenWeld& weld) {
  std::vector<int> positions;
  for (const TWeldPointStatus& s : weld.getSamplinePointsStatus()) positions.push_back(s.pos);
  return positions;
}

TEST(MissingPoints, countMustReachTheMinimumInsideTheBounds) {
  const struct {
    const char* name;
    std::vector<TWeldPointStatus> status;
    int minCount;
    bool expected;
  } rows[] = {
      {"empty list, minimum 0", {}, 0, true},
      {"empty list, minimum 1", {}, 1, false},
      {"empty list, negative minimum", {}, -3, true},
      {"two of two", {{11, 1}, {19, 1}}, 2, true},
      {"two of three", {{11, 1}, {19, 1}}, 3, false},
      {"bounds do not count", {{10, 1}, {20, 1}, {15, 1}}, 2, false},
      {"only status 1 counts", {{12, 0}, {13, 2}, {14, 1}, {15, -1}}, 2, false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(weldWith(row.status).isWeldPosMissingPts(kAnyPos, kLo, kHi, row.minCount), row.expected) << row.name;
  }
}

TEST(ContinuousMissingPoints, runMustExceedTheMaximumInsideTheBounds) {
  const struct {
    const char* name;
    std::vector<TWeldPointStatus> status;
    int maxRun;
    bool expected;
  } rows[] = {
      {"empty list", {}, 0, false},
      {"empty list, negative maximum", {}, -1, false},
      {"found points, negative maximum", {{12, 0}, {13, 2}}, -1, false},
      {"run equal to the maximum", {{11, 1}, {12, 1}, {13, 0}, {14, 1}, {15, 1}}, 2, false},
      {"run above the maximum", {{11, 1}, {12, 1}, {13, 0}, {14, 1}, {15, 1}, {16, 1}}, 2, true},
      {"no pair breaks a run too", {{11, 1}, {12, 2}, {13, 1}}, 1, false},
      {"bounds do not count", {{10, 1}, {11, 1}, {20, 1}}, 1, false},
      {"what lies outside breaks no run", {{11, 1}, {30, 0}, {12, 1}}, 1, true},
      {"list order, not column order", {{12, 1}, {15, 0}, {11, 1}}, 1, false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(weldWith(row.status).isWeldPosContinueMissingPts(kAnyPos, kLo, kHi, row.maxRun), row.expected)
        << row.name;
  }
}

TEST(BaseWeld, copiesAreIndependentAndMovesEmptyOnlyTheStatus) {
  TOpenWeld original = weldWith({{1, 0}, {2, 1}});
  TWeldParams params;
  params.dPara7 = 33.0;
  original.setWeldParameters(params);

  TOpenWeld copied = original;
  copied.setSamplinePointsStatus({});
  EXPECT_EQ(positionsOf(original), (std::vector<int>{1, 2}));

  TOpenWeld moved = std::move(original);
  EXPECT_EQ(positionsOf(moved), (std::vector<int>{1, 2}));
  EXPECT_TRUE(positionsOf(original).empty());
  EXPECT_EQ(original.getWeldParameters().dPara7, 33.0);

  copied = std::move(moved);
  EXPECT_EQ(positionsOf(copied), (std::vector<int>{1, 2}));
  EXPECT_TRUE(positionsOf(moved).empty());
  EXPECT_EQ(moved.getWeldParameters().dPara7, 33.0);

  TOpenWeld& itself = copied;
  copied = std::move(itself);
  EXPECT_EQ(positionsOf(copied), (std::vector<int>{1, 2}));
}

TEST(InitWeldParameters, changesOnlyItsThreeFieldsAndTakesAnyType) {
  for (const int type : {0, 3, 10, 11, -1}) {
    TWeldParams params;
    params.dPara1 = 1.5;
    params.nPara5 = 99;
    params.haveGap = false;
    params.angleRange4 = {-3.0, 4.0};
    initWeldParameters(static_cast<TWeldType>(type), params, TWeldPosType::lower);
    EXPECT_TRUE(params.isInit);
    EXPECT_EQ(static_cast<int>(params.weldType), type);
    EXPECT_EQ(params.weldPosType, TWeldPosType::lower);
    EXPECT_EQ(params.dPara1, 1.5);
    EXPECT_EQ(params.nPara5, 99);
    EXPECT_FALSE(params.haveGap);
    EXPECT_EQ(params.angleRange4.max, 4.0);
  }
}

}  // namespace
