#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

class TOpenWeld : public TBaseWeld {
public:
  explicit TOpenWeld(const std::vector<TWeldPointStatus>& status) { setSamplinePointsStatus(status); }
  using TBaseWeld::setSamplinePointsStatus;

  // Strictly between the columns 10 and 20.
  bool miss(int minCount) const { return isWeldPosMissingPts({7, 7}, 10, 20, minCount); }
  bool missInARow(int maxRun) const { return isWeldPosContinueMissingPts({7, 7}, 10, 20, maxRun); }
  std::size_t columns() const { return getSamplinePointsStatus().size(); }
};

TEST(MissingPoints, countReachesItsMinimumAndRunExceedsItsMaximum) {
  const struct {
    const char* name;
    std::vector<TWeldPointStatus> status;
    int count, longestRun;
  } rows[] = {
      {"empty list", {}, 0, 0},
      {"bounds do not count", {{10, 1}, {11, 1}, {20, 1}}, 1, 1},
      {"only status 1 counts", {{12, 0}, {13, 2}, {14, 1}, {15, -1}}, 1, 1},
      {"two runs", {{11, 1}, {12, 1}, {13, 0}, {14, 1}, {15, 1}, {16, 1}}, 5, 3},
      {"no pair breaks a run too", {{11, 1}, {12, 2}, {13, 1}}, 2, 1},
      {"what lies outside breaks no run", {{11, 1}, {30, 0}, {12, 1}}, 2, 2},
      {"list order, not column order", {{12, 1}, {15, 0}, {11, 1}}, 2, 1},
  };
  for (const auto& row : rows) {
    const TOpenWeld weld(row.status);
    EXPECT_TRUE(weld.miss(row.count) && weld.miss(-3)) << row.name;
    EXPECT_FALSE(weld.miss(row.count + 1)) << row.name;
    EXPECT_FALSE(weld.missInARow(row.longestRun)) << row.name;
    EXPECT_EQ(weld.missInARow(row.longestRun - 1), row.longestRun > 0) << row.name;
    EXPECT_EQ(weld.missInARow(-1), row.longestRun > 0) << row.name;
  }
}

TEST(BaseWeld, copiesAreIndependentAndMovesEmptyOnlyTheStatus) {
  TOpenWeld original({{1, 0}, {2, 1}});
  original.setWeldParameters(TLapSettings{1, 2, 3, 33}.params());
  TOpenWeld copied = original;
  copied.setSamplinePointsStatus({});
  TOpenWeld moved = std::move(original);
  EXPECT_TRUE(moved.columns() == 2 && original.columns() == 0);
  copied = std::move(moved);
  EXPECT_TRUE(copied.columns() == 2 && moved.columns() == 0);
  for (const TOpenWeld* weld : {&original, &moved, &copied}) EXPECT_EQ(weld->getWeldParameters().dPara7, 33.0);
  TOpenWeld& itself = copied;
  copied = std::move(itself);
  EXPECT_EQ(copied.columns(), 2U);
}

TEST(InitWeldParameters, changesOnlyItsThreeFieldsAndTakesAnyType) {
  for (const int type : {0, 3, 10, 11, -1}) {
    TWeldParams params = TLapSettings{1, 2, 3, 33}.params();
    initWeldParameters(static_cast<TWeldType>(type), params, TWeldPosType::lower);
    EXPECT_TRUE(params.isInit);
    EXPECT_EQ(static_cast<int>(params.weldType), type);
    EXPECT_EQ(params.weldPosType, TWeldPosType::lower);
    EXPECT_EQ(TLapSettings::of(params).minStepPx, 33.0);
  }
}

}  // namespace
