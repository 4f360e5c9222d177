#include "tools/compare.h"

#include <algorithm>

namespace tool {
namespace {

void note(TDifference& difference, int frame, const TSeamFrame& lost) {
  difference.frames.push_back(frame);
  difference.reasons.add(frame, lost);
}

// The sides may cut and turn the stored image in different ways: the seam of a side there, judged.
std::optional<cv::Point2d> judge(TComparedSide& side, const TTruth& truth, const TSeamFrame& seen,
                                 const TFrame& frame) {
  const auto seam = storedSeam(seen, frame, side.run.tracking().preparation);
  truth.judge(frame.name, seam, side.truth);
  return seam;
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
  const auto a = judge(both.a, both.truth, compared.a, frame);
  const auto b = judge(both.b, both.truth, compared.b, frame);
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
