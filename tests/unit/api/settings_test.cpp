// The joints' records of settings and the table of parameters speak of the same fields of TWeldParams.
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

struct TRecord {
  TWeldParams usual;                  // of a record as it is made
  TWeldParams counted;                // of one whose settings are 1, 2, 3 ... in the order of the table's rows
  std::vector<double> flags;          // the rows at the end that are flags
  TWeldParams (*copy)(TWeldParams&);  // through a record
};

template <typename TSettings>
TRecord recordOf(const TSettings& counted, const std::vector<double>& flags = {}) {
  return {TSettings().params(), counted.params(), flags,
          [](TWeldParams& params) { return TSettings::of(params).params(); }};
}

TEST(Settings, recordsAndTableSpeakOfTheSameFields) {
  const TRecord records[] = {
      recordOf(TGapSettings{1, 2, 3, 4, {5, 6}}),
      recordOf(TLapSettings{1, 2, 3, 4}),
      recordOf(TCornerSettings{1, 2, 3, 4, 5, {6, 7}, {8, 9}, {10, 11}, 12, 13, false}, {0}),
      recordOf(TPlateSettings{1, 2, 3, 6, {4, 5}}),
      recordOf(TPresenceSettings{true, false}, {1, 0}),
      recordOf(TGrooveSettings{TWeldType::vGroove, 1, 2, 3, 4, 5, {6, 7}, {8, 9}, {10, 11}, false}, {0})};
  for (const TRecord& record : records) {
    const TWeldJoint& joint = *findWeldJoint(record.counted.weldType);
    TWeldParams params;  // every row set, read through the record
    for (std::size_t i = 0; i < joint.parameters.size(); ++i) {
      const TWeldParameter& row = joint.parameters[i];
      SCOPED_TRACE(std::string(joint.name) + " " + row.name);
      const std::size_t numbers = joint.parameters.size() - record.flags.size();
      const double expected = i < numbers ? static_cast<double>(i + 1) : record.flags[i - numbers];
      EXPECT_EQ(row.value.get(record.counted), expected);
      EXPECT_EQ(row.value.get(record.usual), row.value.get(TWeldParams()));
      EXPECT_EQ(findWeldParameter(joint, row.field), &row);
      EXPECT_EQ(findWeldParameter(joint, row.name), &row);
      row.value.set(params, expected);
    }
    const TWeldParams copied = record.copy(params);
    for (const TWeldJoint& other : weldJoints()) {
      for (const TWeldParameter& row : other.parameters)
        EXPECT_EQ(row.value.get(copied), row.value.get(params)) << joint.name << " through " << row.field;
    }
  }
}

}  // namespace
