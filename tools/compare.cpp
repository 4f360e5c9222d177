#include "tools/compare.h"

#include <algorithm>

namespace tool {
namespace {

void note(TDifference& difference, int frame, const TSeamFrame& lost) {
  difference.frames.push_back(frame);
  difference.reasons.add(frame, lost);
}

}  // namespace

TComparedFrame compareFrame(TComparison& both, const TFrame& frame) {
  const TFrame forA = prepared(frame, both.a.run.tracking().preparation);
  const TFrame forB = prepared(frame, both.b.run.tracking().preparation);
  TComparedFrame compared{frame.index,           frame.name, forA.image, forB.image, both.a.run.next(forA),
                          both.b.run.next(forB), {}};
  if (compared.a.isFound && !compared.b.isFound) {
    note(both.onlyA, frame.index, compared.b);
  }
  if (compared.b.isFound && !compared.a.isFound) {
    note(both.onlyB, frame.index, compared.a);
  }
  // The sides may cut and turn the stored image in different ways.
  const auto& a = compared.a.storedSeam;
  const auto& b = compared.b.storedSeam;
  both.truth.judge(frame.name, a, both.a.truth);
  both.truth.judge(frame.name, b, both.b.truth);
  if (a && b) {
    compared.distancePx = cv::norm(*a - *b);
    both.distancesPx.push_back(*compared.distancePx);
  }
  return compared;
}

std::vector<TReasonRow> reasonsOf(const TComparison& both) {
  std::vector<TReasonRow> rows;
  for (const TReasonTally::TRow& reason : both.a.run.reasons().rows()) {
    rows.push_back({reason.frames, 0, reason.reason});
  }
  for (const TReasonTally::TRow& reason : both.b.run.reasons().rows()) {
    auto row =
        std::find_if(rows.begin(), rows.end(), [&](const TReasonRow& r) { return r.reason == reason.reason; });
    if (row == rows.end()) {
      row = rows.insert(row, {0, 0, reason.reason});
    }
    row->b = reason.frames;
  }
  return rows;
}

}  // namespace tool
