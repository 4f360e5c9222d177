// One detector on hand-made stripe points: its seam, or the reason why there is none.
#pragma once

#include "detectors/seam.h"
#include "geometry/piece_fit.h"
#include "support/painted_frame.h"
#include "trace/trace_conclusion.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace ending {

using TStripePts = std::vector<cv::Point2f>;

// The tests that the rows of a table came by: each must have stopped one of them.
class TSeenChecks {
public:
  void add(const TTraceAttempt& attempt) {
    for (const TTraceCheck& check : attempt.checks) {
      (check.passed ? passed : failed).insert(check.name);
    }
  }
  void expectEachStoppedARow() const {
    for (const std::string& name : passed) EXPECT_GT(failed.count(name), 0U) << "no row fails at: " << name;
  }

private:
  std::set<std::string> passed;
  std::set<std::string> failed;
};

struct TEnding {
  bool isFound = false;
  std::string reason;  // "found"
  cv::Point2f pos;
  weld::TSeam seam{weld::heapMemory()};
};

// What `find`, a function of the frame, gives on the image.
template <typename TFind>
TEnding of(const cv::Mat& image, const TWeldParams& params, TSeenChecks& seen, TFind find) {
  TFrameTrace record;
  const weld::TTrace trace(record);
  trace.beginAttempt(TSearchPath::first, TStripeExtraction::edgePairs);
  weld::TSeam seam = find(weld::TFrame{image, params, weld::heapMemory(), trace});
  if (seam.isFound) {
    weld::concludeFoundAttempt(record, "");
  } else {
    weld::concludeFailedAttempt(record, weldJoints().front());
  }
  seen.add(trace.attempt());
  return {seam.isFound, trace.attempt().reason, seam.pos, std::move(seam)};
}

// A detector on the points, with a centre in every column.
inline TEnding of(weld::TFindSeam find, const TStripePts& points, const TWeldParams& params, TSeenChecks& seen,
                  const weld::TPrevious& previous = {}) {
  return of(painted::dark(), params, seen, [&](const weld::TFrame& frame) {
    weld::TStripe stripe(weld::heapMemory());
    stripe.points.assign(points.begin(), points.end());
    for (int x = 0; x < frame.image.cols; ++x) stripe.status.push_back({x, 0});
    return find(frame, stripe, previous);
  });
}

inline weld::TPrevious foundBefore() {
  weld::TPrevious previous;
  previous.isFound = true;
  return previous;
}

// Settings with one of them changed.
template <typename TSettings, typename TValue>
TSettings with(TSettings settings, TValue TSettings::*field, TValue value) {
  settings.*field = value;
  return settings;
}

// A fitted piece over the columns fromX .. toX at the given start row and slope.
inline weld::TPiece piece(int fromX, int toX, double y, double k = 0.0) {
  const TStripePts points = painted::linePoints(fromX, toX + 1, y, k);
  return weld::fitPiece({points.begin(), points.end()}, weld::kPieceFitTolPx, weld::heapMemory());
}

}  // namespace ending
